#include "tether/rpc/text.h"

#include <cstddef>
#include <cstdint>

namespace rpc {
namespace {

std::uint32_t byte_at(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

bool is_continued(std::string_view text, std::size_t from, std::size_t to) {
    if (to > text.size()) {
        return false;
    }
    for (std::size_t at = from; at < to; ++at) {
        if ((byte_at(text, at) & 0xC0U) != 0x80U) {
            return false;
        }
    }
    return true;
}

// How many bytes the character that begins here has; 0: none begins here. Longer ways of writing a
// character, halves of UTF-16 pairs and numbers beyond the last character are none.
std::size_t character_at(std::string_view text, std::size_t at) {
    const std::uint32_t first = byte_at(text, at);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || !is_continued(text, at + 1, at + length)) {
        return 0;
    }
    const std::uint32_t second = byte_at(text, at + 1);
    const bool good = first == 0xE0   ? second >= 0xA0
                      : first == 0xED ? second < 0xA0
                      : first == 0xF0 ? second >= 0x90
                      : first == 0xF4 ? second < 0x90
                                      : true;
    return good ? length : 0;
}

bool is_valid(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = character_at(bytes, at);
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

void append_escaped(std::string& text, char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    text += '%';
    text += digits[value >> 4U];
    text += digits[value & 0xFU];
}

}  // namespace

std::string valid_text(std::string_view bytes) {
    if (is_valid(bytes)) {
        return std::string(bytes);
    }
    std::string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = character_at(bytes, at);
        if (length == 0 || bytes[at] == '%') {
            append_escaped(text, bytes[at]);
            ++at;
        } else {
            text += bytes.substr(at, length);
            at += length;
        }
    }
    return text;
}

}  // namespace rpc
