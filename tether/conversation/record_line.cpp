#include "tether/conversation/record_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

#include "host/values/utf8.h"

namespace tether {
namespace {

constexpr std::string_view marks = "><!#";
constexpr std::string_view digits = "0123456789ABCDEF";
// Stands between mark and text where the text has escapes.
constexpr char escaped = '\\';
// Of the seconds; more would not fit into the milliseconds of any shoot.
constexpr std::size_t most_digits = 12;

bool is_control(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return (value < 0x20 && byte != '\t') || value == 0x7F;
}

bool is_plain(std::string_view text) {
    return std::none_of(text.begin(), text.end(), is_control) && host::is_utf8(text);
}

std::string with_escapes(const RecordLine& line) {
    const bool characters = host::is_utf8(line.text);
    std::string text;
    for (const char byte : line.text) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte == escaped) {
            text += "\\\\";
        } else if (is_control(byte) || (value >= 0x80 && !characters)) {
            text += {'\\', 'x', digits[value >> 4U], digits[value & 0xFU]};
        } else {
            text += byte;
        }
    }
    return line.whole ? text : text + escaped;
}

// Nothing when an escape is none. A backslash at the very end: the line has not ended.
bool take_escapes(std::string_view text, RecordLine& line) {
    while (!text.empty()) {
        if (text.front() != escaped) {
            line.text += text.front();
            text.remove_prefix(1);
        } else if (text.size() == 1) {
            line.whole = false;
            text = {};
        } else if (text[1] == escaped) {
            line.text += escaped;
            text.remove_prefix(2);
        } else {
            const std::string_view number = text.substr(std::min<std::size_t>(2, text.size()), 2);
            unsigned value = 0;
            const auto [end, error] =
                std::from_chars(number.data(), number.data() + number.size(), value, 16);
            if (text[1] != 'x' || number.size() != 2 || error != std::errc() ||
                end != number.data() + 2) {
                return false;
            }
            line.text += static_cast<char>(value);
            text.remove_prefix(4);
        }
    }
    return true;
}

// "   1.234", which is taken from the text. Whoever writes one by hand may leave digits out.
std::optional<std::chrono::milliseconds> take_time(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::size_t point = text.find_first_not_of("0123456789");
    if (point == 0 || point > most_digits || point >= text.size() || text[point] != '.') {
        return std::nullopt;
    }
    const std::size_t end = std::min(text.find(' ', point), text.size());
    std::string parts(text.substr(point + 1, end - point - 1));
    if (parts.empty() || parts.size() > 3 ||
        parts.find_first_not_of("0123456789") != std::string::npos) {
        return std::nullopt;
    }
    parts.resize(3, '0');
    const std::string_view whole = text.substr(0, point);
    long long seconds = 0;
    long long rest = 0;
    std::from_chars(whole.data(), whole.data() + whole.size(), seconds);
    std::from_chars(parts.data(), parts.data() + parts.size(), rest);
    text.remove_prefix(end);
    return std::chrono::milliseconds(seconds * 1000 + rest);
}

}  // namespace

std::string written(const RecordLine& line) {
    char time[32];
    std::snprintf(time, sizeof time, "%8.3f ", std::chrono::duration<double>(line.at).count());
    if (line.whole && is_plain(line.text)) {
        return std::string(time) + line.mark + " " + line.text;
    }
    return std::string(time) + line.mark + escaped + " " + with_escapes(line);
}

std::optional<RecordLine> read_record_line(std::string_view text) {
    RecordLine line;
    const auto at = take_time(text);
    if (!at || text.size() < 2 || text[0] != ' ' || marks.find(text[1]) == std::string_view::npos) {
        return std::nullopt;
    }
    line.at = *at;
    line.mark = text[1];
    text.remove_prefix(2);
    const bool has_escapes = text.starts_with(escaped);
    text.remove_prefix(has_escapes ? 1 : 0);
    // An editor may have cut the space off that an empty text follows.
    if (!text.empty() && text.front() != ' ') {
        return std::nullopt;
    }
    text.remove_prefix(std::min<std::size_t>(1, text.size()));
    if (!has_escapes) {
        line.text = text;
    } else if (!take_escapes(text, line)) {
        return std::nullopt;
    }
    return line;
}

}  // namespace tether
