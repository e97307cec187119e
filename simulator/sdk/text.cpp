#include "simulator/sdk/text.h"

#include <cstdio>
#include <limits>

namespace camera_sim {

int hex_digit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

std::optional<std::uint64_t> to_number(std::string_view text) {
    const bool hexadecimal =
        text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const std::uint64_t base = hexadecimal ? 16 : 10;
    std::uint64_t number = 0;
    if (text.empty()) {
        return std::nullopt;
    }
    for (const char c : text.substr(hexadecimal ? 2 : 0)) {
        const int digit = hex_digit(c);
        if (digit < 0 || static_cast<std::uint64_t>(digit) >= base) {
            return std::nullopt;
        }
        const auto added = static_cast<std::uint64_t>(digit);
        if (number > (std::numeric_limits<std::uint64_t>::max() - added) / base) {
            return std::nullopt;
        }
        number = number * base + added;
    }
    return number;
}

std::string in_quotes(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += {'\\', c};
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\r') {
            quoted += "\\r";
        } else if (byte < 0x20 || byte == 0x7F) {
            quoted += "\\x" + hex(byte, 2).substr(2);
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string hex(std::uint32_t number, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", digits, number);
    return text;
}

}  // namespace camera_sim
