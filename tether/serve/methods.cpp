// Written by catalogue/generate: change catalogue/openrpc.json.
#include "tether/serve/methods.h"

namespace serve {

using rpc::Method;
using rpc::Parameter;
using rpc::Type;

namespace {

std::vector<Parameter> in_client() {
    return {
        {.name = "name", .type = Type::text, .required = true, .longest = 256},
        {.name = "version", .type = Type::text, .required = true, .longest = 256},
    };
}

std::vector<Parameter> of_initialize() {
    return {
        {.name = "client", .type = Type::object, .required = true, .members = in_client()},
        {.name = "protocols", .type = Type::list_of_integers, .most_items = 64, .contains = 1},
    };
}

std::vector<Parameter> of_capture() {
    return {
        {.name = "patience", .type = Type::number, .least = 0.1, .most = 3600},
        {.name = "expires", .type = Type::number, .least = 0, .most = 3600},
        {.name = "name", .type = Type::text, .longest = 1024},
        {.name = "tag", .type = Type::text, .longest = 1024},
    };
}

std::vector<Parameter> of_cancel() {
    return {
        {.name = "tag", .type = Type::text, .required = true, .longest = 1024},
    };
}

std::vector<Parameter> of_configure() {
    return {
        {.name = "folder", .type = Type::text, .shortest = 1, .longest = 4095},
        {.name = "saveDestination", .type = Type::text, .words = {"disk", "card", "both"}},
        {.name = "fileType", .type = Type::text, .words = {"jpeg", "raw", "both"}},
        {.name = "name", .type = Type::text, .longest = 1024},
    };
}

std::vector<Parameter> of_pictures() {
    return {
        {.name = "after", .type = Type::text, .longest = 256},
        {.name = "limit", .type = Type::integer, .least = 1, .most = 1000},
    };
}

std::vector<Parameter> of_subscribe() {
    return {
        {.name = "lines", .type = Type::yes_or_no, .required = true},
    };
}

std::vector<Parameter> of_simulate() {
    return {
        {.name = "line",
         .type = Type::text,
         .required = true,
         .shortest = 1,
         .longest = 65536,
         .one_line = true},
    };
}

std::vector<Parameter> of_shutdown() {
    return {
        {.name = "patience", .type = Type::number, .least = 0, .most = 3600},
    };
}

}  // namespace

const std::vector<Method>& methods() {
    static const std::vector<Method> all{
        {"initialize", of_initialize()},
        {"connect", {}},
        {"disconnect", {}},
        {"capture", of_capture()},
        {"cancel", of_cancel()},
        {"configure", of_configure()},
        {"state", {}},
        {"pictures", of_pictures()},
        {"subscribe", of_subscribe()},
        {"simulate", of_simulate()},
        {"shutdown", of_shutdown()},
    };
    return all;
}

}  // namespace serve
