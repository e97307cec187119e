#include "protocol/fields.h"

#include <cstddef>
#include <optional>

namespace {

constexpr std::size_t escape_length = 3;

// The byte that the escape at `position` stands for, if there is a whole and known one.
std::optional<char> escaped_byte(const std::string& field, std::size_t position) {
    if (field[position] != '%' || position + escape_length > field.size()) {
        return std::nullopt;
    }
    const char high = field[position + 1];
    const char low = field[position + 2];
    if (high == '2' && low == '5') {
        return '%';
    }
    if (high == '7' && (low == 'C' || low == 'c')) {
        return '|';
    }
    if (high == '0' && (low == 'A' || low == 'a')) {
        return '\n';
    }
    if (high == '0' && (low == 'D' || low == 'd')) {
        return '\r';
    }
    return std::nullopt;
}

}  // namespace

std::string escape_field(const std::string& text) {
    std::string field;
    field.reserve(text.size());
    for (const char byte : text) {
        switch (byte) {
            case '%':
                field += "%25";
                break;
            case '|':
                field += "%7C";
                break;
            case '\n':
                field += "%0A";
                break;
            case '\r':
                field += "%0D";
                break;
            default:
                field += byte;
        }
    }
    return field;
}

std::string decode_field(const std::string& field) {
    std::string text;
    text.reserve(field.size());
    std::size_t position = 0;
    while (position < field.size()) {
        if (const std::optional<char> byte = escaped_byte(field, position)) {
            text += *byte;
            position += escape_length;
        } else {
            text += field[position];
            ++position;
        }
    }
    return text;
}

std::vector<std::string> split_fields(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t bar = line.find('|', start);
        if (bar == std::string::npos) {
            fields.emplace_back(line, start);
            return fields;
        }
        fields.emplace_back(line, start, bar - start);
        start = bar + 1;
    }
}
