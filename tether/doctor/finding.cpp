#include "tether/doctor/finding.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace doctor {
namespace {

constexpr std::size_t most_shown = 4000;  // bytes

// How many bytes the character at the front of the text has; 0 when they are not UTF-8 or control
// the terminal.
std::size_t shown_as_it_is(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        return lead >= 0x20 && lead != 0x7F ? 1 : 0;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
        return 0;
    }
    std::uint32_t code = lead & (0x7Fu >> length);
    for (const char next : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(next);
        if ((byte & 0xC0) != 0x80) {
            return 0;
        }
        code = code << 6 | (byte & 0x3Fu);
    }
    // The shortest way to write it, and none of the second set of control characters.
    constexpr std::uint32_t least[] = {0, 0, 0xA0, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    return code < least[length] || code > 0x10FFFF || surrogate ? 0 : length;
}

std::string shown(std::string_view text, bool in_lines) {
    std::string result;
    while (!text.empty()) {
        if (result.size() >= most_shown) {
            return result + "…";
        }
        const bool plain_break = in_lines && (text.front() == '\n' || text.front() == '\t');
        const std::size_t length = plain_break ? 1 : shown_as_it_is(text);
        if (length > 0) {
            result += text.substr(0, length);
            text.remove_prefix(length);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X",
                          static_cast<unsigned>(static_cast<unsigned char>(text.front())));
            result += escaped;
            text.remove_prefix(1);
        }
    }
    return result;
}

Finding finding(Verdict verdict, std::string_view text, std::string_view advice) {
    return {verdict, shown(text, false), shown(advice, true)};
}

}  // namespace

std::string in_shell_quotes(const std::string& text) {
    std::string quoted = "'";
    for (const char byte : text) {
        quoted += byte == '\'' ? std::string("'\\''") : std::string(1, byte);
    }
    return quoted + "'";
}

Finding ok(const std::string& text) {
    return finding(Verdict::ok, text, {});
}

Finding warning(const std::string& text, const std::string& advice) {
    return finding(Verdict::warning, text, advice);
}

Finding failure(const std::string& text, const std::string& advice) {
    return finding(Verdict::failure, text, advice);
}

}  // namespace doctor
