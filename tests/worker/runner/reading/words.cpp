#include "tests/worker/runner/reading/words.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace transcript {
namespace {

constexpr std::string_view blanks = " \t";

std::optional<char> take_escape(std::string_view& rest) {
    const char letter = rest.empty() ? '\0' : rest.front();
    rest.remove_prefix(rest.empty() ? 0 : 1);
    switch (letter) {
        case '"':
        case '\\':
            return letter;
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'x': {
            unsigned value = 0;
            const std::string digits(rest.substr(0, 2));
            const char* const end = digits.c_str() + digits.size();
            if (digits.size() < 2 || std::from_chars(digits.c_str(), end, value, 16).ptr != end) {
                return std::nullopt;
            }
            rest.remove_prefix(2);
            return static_cast<char>(value);
        }
        default:
            return std::nullopt;
    }
}

void skip_blanks(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
}

}  // namespace

std::optional<std::string> take_quoted(std::string_view& rest) {
    if (!rest.starts_with('"')) {
        return std::nullopt;
    }
    rest.remove_prefix(1);
    std::string text;
    while (!rest.empty()) {
        const char byte = rest.front();
        rest.remove_prefix(1);
        if (byte == '"') {
            return text;
        }
        if (byte != '\\') {
            text += byte;
        } else if (const auto escaped = take_escape(rest)) {
            text += *escaped;
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<std::string> read_bytes(std::string_view text) {
    std::string bytes;
    std::string_view rest = trimmed(text);
    do {
        const auto piece = take_quoted(rest);
        if (!piece) {
            return std::nullopt;
        }
        skip_blanks(rest);
        if (!rest.starts_with('*')) {
            bytes += *piece;
            continue;
        }
        rest.remove_prefix(1);
        skip_blanks(rest);
        unsigned times = 0;
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), times);
        if (error != std::errc()) {
            return std::nullopt;
        }
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        skip_blanks(rest);
        for (unsigned number = 1; number <= times; ++number) {
            bytes += replaced(*piece, "{n}", std::to_string(number));
        }
    } while (!rest.empty());
    return bytes;
}

std::string replaced(std::string text, std::string_view what, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
        text.replace(at, what.size(), by);
    }
    return text;
}

std::optional<Milliseconds> read_duration(std::string_view text) {
    const std::size_t digits = text.find_first_not_of("0123456789.");
    if (digits == 0 || digits == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view unit = text.substr(digits);
    if (unit != "ms" && unit != "s") {
        return std::nullopt;
    }
    const std::string number(text.substr(0, digits));
    char* end = nullptr;
    const double value = std::strtod(number.c_str(), &end);
    if (end != number.c_str() + number.size()) {
        return std::nullopt;
    }
    return Milliseconds(std::llround(unit == "s" ? value * 1000 : value));
}

std::optional<Milliseconds> take_pause(std::string_view& rest) {
    if (!rest.starts_with('+')) {
        return std::nullopt;
    }
    const std::size_t end = std::min(rest.find(' '), rest.size());
    const auto pause = read_duration(rest.substr(1, end - 1));
    if (pause) {
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return pause;
}

std::optional<std::vector<std::string>> read_words(std::string_view text) {
    std::vector<std::string> words;
    for (skip_blanks(text); !text.empty(); skip_blanks(text)) {
        if (text.front() == '"') {
            const auto quoted = take_quoted(text);
            if (!quoted) {
                return std::nullopt;
            }
            words.push_back(*quoted);
        } else {
            const std::size_t end = std::min(text.find_first_of(blanks), text.size());
            words.emplace_back(text.substr(0, end));
            text.remove_prefix(end);
        }
    }
    return words;
}

std::vector<std::string_view> split_list(std::string_view text) {
    std::vector<std::string_view> pieces;
    bool quoted = false;
    std::size_t begin = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && quoted) {
            ++at;
        } else if (text[at] == '"') {
            quoted = !quoted;
        } else if (text[at] == ',' && !quoted) {
            pieces.push_back(trimmed(text.substr(begin, at - begin)));
            begin = at + 1;
        }
    }
    pieces.push_back(trimmed(text.substr(begin)));
    return pieces;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

}  // namespace transcript
