// What a client can ask for, with which parameters, and what it is told unasked.
// Written by catalogue/generate: change catalogue/openrpc.json.
#pragma once

#include <vector>

#include "tether/rpc/method.h"

namespace serve {

const std::vector<rpc::Method>& methods();

namespace notification {
inline constexpr const char* state = "state";
inline constexpr const char* picture = "picture";
inline constexpr const char* shot = "shot";
inline constexpr const char* problem = "problem";
inline constexpr const char* line = "line";
}  // namespace notification

}  // namespace serve
