// The two kinds of JSON: what is read, and what is written.
#pragma once

#include <nlohmann/json.hpp>

namespace rpc {

// Members by name: a client may send any number of them.
using Read = nlohmann::json;

// Members in the order in which they were put in, for who reads along.
using Json = nlohmann::ordered_json;

}  // namespace rpc
