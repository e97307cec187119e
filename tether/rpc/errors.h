// What a request can fail with.
#pragma once

#include <string>

#include "tether/rpc/json.h"

namespace rpc {

namespace code {
// The standard's own.
inline constexpr int bad_json = -32700;
inline constexpr int invalid_request = -32600;
inline constexpr int unknown_method = -32601;
inline constexpr int bad_parameters = -32602;
inline constexpr int internal_error = -32603;
// Something is wrong with camera, worker or disk: `data` is the problem.
inline constexpr int problem = -32000;
}  // namespace code

struct Error {
    int code = code::internal_error;
    std::string message;
    Json data{};  // null: none
};

}  // namespace rpc
