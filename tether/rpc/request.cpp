#include "tether/rpc/request.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace rpc {
namespace {

// The deepest thing that any method takes has 3 levels.
constexpr std::size_t deepest = 32;

constexpr double beyond_integers = 9223372036854775808.0;  // 2 to the 63rd

bool is_too_deep(std::string_view text) {
    std::size_t depth = 0;
    bool in_string = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (in_string) {
            if (byte == '\\') {
                ++at;
            }
            in_string = byte != '"';
        } else if (byte == '"') {
            in_string = true;
        } else if (byte == '[' || byte == '{') {
            if (++depth > deepest) {
                return true;
            }
        } else if ((byte == ']' || byte == '}') && depth > 0) {
            --depth;
        }
    }
    return false;
}

// As it was sent. Nothing when it is of no kind that an id may be.
std::optional<Json> id_of(const Read& value) {
    switch (value.type()) {
        case Read::value_t::null:
            return Json();
        case Read::value_t::string:
            return Json(value.get_ref<const std::string&>());
        case Read::value_t::number_integer:
            return Json(value.get<std::int64_t>());
        case Read::value_t::number_unsigned:
            return Json(value.get<std::uint64_t>());
        case Read::value_t::number_float:
            // A whole number of more digits would come back as another one.
            if (std::abs(value.get<double>()) >= beyond_integers) {
                return std::nullopt;
            }
            return Json(value.get<double>());
        default:
            return std::nullopt;
    }
}

Refusal refusal(std::optional<Json> id, int number, std::string message) {
    return {std::move(id), {number, std::move(message), {}}};
}

Refusal invalid(std::optional<Json> id, std::string message) {
    return refusal(std::move(id), code::invalid_request, "Invalid request: " + std::move(message));
}

}  // namespace

std::variant<Request, Refusal> read_request(std::string_view text) {
    if (is_too_deep(text)) {
        return invalid(Json(), "it is nested more than " + std::to_string(deepest) + " deep");
    }
    Read message = Read::parse(text, nullptr, false);
    if (message.is_discarded()) {
        return refusal(Json(), code::bad_json, "This is not JSON in UTF-8");
    }
    if (message.is_array()) {
        return invalid(Json(), "batches are not taken, one message a line is");
    }
    if (!message.is_object()) {
        return invalid(Json(), "it is not an object");
    }
    Request request;
    if (const auto id = message.find("id"); id != message.end()) {
        request.id = id_of(*id);
        if (!request.id) {
            return invalid(Json(), "id must be a string, a number of at most 64 bits or null");
        }
    }
    // Nobody can be meant not to be answered who did not even write a request.
    const Json answered = request.id.value_or(Json());
    const auto version = message.find("jsonrpc");
    if (version == message.end() || !version->is_string() ||
        version->get_ref<const std::string&>() != "2.0") {
        return invalid(answered, "jsonrpc must be \"2.0\"");
    }
    const auto method = message.find("method");
    if (method == message.end() || !method->is_string()) {
        return invalid(answered, "method must be a string");
    }
    request.method = method->get<std::string>();
    const auto parameters = message.find("params");
    if (parameters == message.end()) {
        return request;
    }
    if (parameters->is_array()) {
        return refusal(request.id, code::bad_parameters,
                       "params: must be an object, parameters are given by name");
    }
    if (!parameters->is_object()) {
        return invalid(answered, "params must be an object");
    }
    request.parameters = std::move(*parameters);
    return request;
}

}  // namespace rpc
