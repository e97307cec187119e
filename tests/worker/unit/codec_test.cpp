// What escaping and decoding promise for every text, tried on every short one. In sanitized builds
// only on some of them: there are 36 million.

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

#include "protocol/fields.h"
#include "tests/sanitized.h"

namespace {

std::string all_bytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

// The codec said in another way: at each place, the first of these that fits.
std::string decoded_by_table(std::string_view field) {
    struct Escape {
        std::string_view escape;
        char byte;
    };
    constexpr Escape escapes[] = {{"%25", '%'},  {"%7C", '|'},  {"%7c", '|'}, {"%0A", '\n'},
                                  {"%0a", '\n'}, {"%0D", '\r'}, {"%0d", '\r'}};
    std::string text;
    while (!field.empty()) {
        char byte = field.front();
        std::size_t length = 1;
        for (const Escape& row : escapes) {
            if (byte == '%' && field.substr(0, row.escape.size()) == row.escape) {
                byte = row.byte;
                length = row.escape.size();
            }
        }
        text += byte;
        field.remove_prefix(length);
    }
    return text;
}

// The promise that is broken for this text; nothing when all are kept.
std::string_view broken_promise(const std::string& text) {
    const std::string field = escape_field(text);
    if (decode_field(field) != text) {
        return "an escaped text is decoded to itself";
    }
    if (field.find_first_of("|\n\r") != std::string::npos) {
        return "an escaped text is one field of one line";
    }
    const std::string decoded = decode_field(text);
    if (decoded.size() > text.size() || decoded.empty() != text.empty()) {
        return "decoding never lengthens and never empties";
    }
    if (decoded != (text.find('%') == std::string::npos ? text : decoded_by_table(text))) {
        return "any text is decoded as the table says";
    }
    return {};
}

// Counts to the next text of the same length, with the bytes of the alphabet as digits; false at
// the end. `digits` are the places of the text's bytes in the alphabet.
bool advance(std::string& text, std::vector<std::size_t>& digits, std::string_view alphabet) {
    for (std::size_t position = 0; position < text.size(); ++position) {
        digits[position] = (digits[position] + 1) % alphabet.size();
        text[position] = alphabet[digits[position]];
        if (digits[position] != 0) {
            return true;
        }
    }
    return false;
}

// Tries every text of at most `longest` bytes of the alphabet.
void try_every_text(std::string_view alphabet, std::size_t longest) {
    for (std::size_t length = 0; length <= longest; ++length) {
        std::string text(length, alphabet.front());
        std::vector<std::size_t> digits(length);
        do {
            const std::string_view broken = broken_promise(text);
            if (!broken.empty()) {
                FAIL() << broken << ": " << testing::PrintToString(text);
            }
        } while (advance(text, digits, alphabet));
    }
}

TEST(Codec, KeepsItsPromisesForAllBytes) {
    try_every_text(all_bytes(), sanitized ? 1 : 3);
}

TEST(Codec, KeepsItsPromisesForTheBytesOfTwoEscapesAndASeparator) {
    try_every_text("%257C0A|", sanitized ? 5 : 8);
}

TEST(Codec, KeepsItsPromisesForEveryByteThatItLooksAt) {
    try_every_text("%|\n\r257Cc0AaDd", sanitized ? 3 : 5);
}

}  // namespace
