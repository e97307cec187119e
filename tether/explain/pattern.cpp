#include "tether/explain/pattern.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <vector>

namespace explain {

bool is_line_of(std::string_view line, std::string_view text) {
    const std::size_t brace = text.find('{');
    if (brace == std::string_view::npos) {
        return line == text;
    }
    if (!line.starts_with(text.substr(0, brace))) {
        return false;
    }
    line.remove_prefix(brace);
    const std::size_t end = std::min(text.find('}', brace), text.size() - 1);
    const std::string_view name = text.substr(brace + 1, end - brace - 1);
    text.remove_prefix(end + 1);
    // A line is short, and a text has three of these at most.
    for (std::size_t length = name == "hint" ? 0 : 1; length <= line.size(); ++length) {
        const bool fits = name != "code" || (length == 10 && code_in(line.substr(0, length)));
        if (fits && is_line_of(line.substr(length), text)) {
            return true;
        }
    }
    return false;
}

std::optional<std::uint32_t> code_in(std::string_view text) {
    const std::size_t at = text.find("0x");
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(at + 2);
    std::uint32_t code = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code, 16);
    return error == std::errc() ? std::optional(code) : std::nullopt;
}

std::size_t distance(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t line = 1; line <= one.size(); ++line) {
        std::size_t diagonal = row[0];
        row[0] = line;
        for (std::size_t column = 1; column <= other.size(); ++column) {
            const std::size_t above = row[column];
            const std::size_t changed = diagonal + (one[line - 1] == other[column - 1] ? 0 : 1);
            row[column] = std::min({above + 1, row[column - 1] + 1, changed});
            diagonal = above;
        }
    }
    return row.back();
}

}  // namespace explain
