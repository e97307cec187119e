#include "host/values/utf8.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace host {
namespace {

struct Length {
    unsigned int bytes;
    std::uint8_t least_second;
    std::uint8_t most_second;
};

// Of a character that begins with this byte; 0 for none. The second byte's bounds leave out what
// could be written shorter, surrogates, and what lies behind the last character.
Length length_of(std::uint8_t first) {
    if (first < 0x80) {
        return {1, 0, 0};
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return {2, 0x80, 0xBF};
    }
    if (first >= 0xE0 && first <= 0xEF) {
        return {3, static_cast<std::uint8_t>(first == 0xE0 ? 0xA0 : 0x80),
                static_cast<std::uint8_t>(first == 0xED ? 0x9F : 0xBF)};
    }
    if (first >= 0xF0 && first <= 0xF4) {
        return {4, static_cast<std::uint8_t>(first == 0xF0 ? 0x90 : 0x80),
                static_cast<std::uint8_t>(first == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, 0, 0};
}

// Bytes of the character that the text begins with; 0: none.
std::size_t character(std::string_view text) {
    const Length length = length_of(static_cast<std::uint8_t>(text[0]));
    if (length.bytes > text.size()) {
        return 0;
    }
    for (unsigned int index = 1; index < length.bytes; ++index) {
        const auto byte = static_cast<std::uint8_t>(text[index]);
        const std::uint8_t least = index == 1 ? length.least_second : std::uint8_t{0x80};
        const std::uint8_t most = index == 1 ? length.most_second : std::uint8_t{0xBF};
        if (byte < least || byte > most) {
            return 0;
        }
    }
    return length.bytes;
}

int digit(char letter) {
    if (letter >= '0' && letter <= '9') {
        return letter - '0';
    }
    return letter >= 'A' && letter <= 'F' ? letter - 'A' + 10 : -1;
}

}  // namespace

bool is_utf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t bytes = character(text);
        if (bytes == 0) {
            return false;
        }
        text.remove_prefix(bytes);
    }
    return true;
}

std::string escape_bytes(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    while (!bytes.empty()) {
        const std::size_t count = character(bytes);
        if (count == 0 || bytes[0] == '%') {
            const auto byte = static_cast<std::uint8_t>(bytes[0]);
            text += {'%', digits[byte >> 4], digits[byte & 15]};
            bytes.remove_prefix(1);
        } else {
            text += bytes.substr(0, count);
            bytes.remove_prefix(count);
        }
    }
    return text;
}

std::string unescape_bytes(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const int high = text[at] == '%' && at + 2 < text.size() ? digit(text[at + 1]) : -1;
        const int low = high >= 0 ? digit(text[at + 2]) : -1;
        if (low >= 0) {
            bytes += static_cast<char>(high * 16 + low);
            at += 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

}  // namespace host
