// One message of a client, read: a request, or what is wrong with it.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tether/rpc/errors.h"
#include "tether/rpc/json.h"

namespace rpc {

struct Request {
    std::optional<Json> id;  // a string, a number or null; nothing: done and not answered
    std::string method;
    Read parameters = Read::object();  // an object
};

// Answered with an error, under the id null where none could be read.
struct Refusal {
    std::optional<Json> id;  // nothing: not answered
    Error error;
};

// Never throws, and takes no deeper stack for deeper input.
std::variant<Request, Refusal> read_request(std::string_view text);

}  // namespace rpc
