#include "host/process/fields.h"

#include <array>

namespace host {
namespace {

struct Escape {
    char byte;
    std::string_view upper;
    std::string_view lower;
};

constexpr std::array<Escape, 4> escapes{{
    {'%', "%25", "%25"},
    {'|', "%7C", "%7c"},
    {'\n', "%0A", "%0a"},
    {'\r', "%0D", "%0d"},
}};

}  // namespace

std::string escape_field(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    for (const char byte : text) {
        std::string_view written(&byte, 1);
        for (const Escape& escape : escapes) {
            if (escape.byte == byte) {
                written = escape.upper;
            }
        }
        escaped += written;
    }
    return escaped;
}

std::string unescape_field(std::string_view field) {
    std::string text;
    text.reserve(field.size());
    for (std::size_t at = 0; at < field.size();) {
        const std::string_view piece = field.substr(at, 3);
        char byte = field[at];
        std::size_t used = 1;
        for (const Escape& escape : escapes) {
            if (piece == escape.upper || piece == escape.lower) {
                byte = escape.byte;
                used = piece.size();
            }
        }
        text += byte;
        at += used;
    }
    return text;
}

std::vector<std::string> split_fields(std::string_view line) {
    std::vector<std::string> fields;
    for (;;) {
        const std::size_t separator = line.find('|');
        fields.emplace_back(line.substr(0, separator));
        if (separator == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(separator + 1);
    }
}

}  // namespace host
