// What escaping and decoding promise for every text, tried on every short one.

#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "protocol/fields.h"

namespace {

std::string all_bytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

// Every byte that the codec looks at, neighbours of each, and bytes at the ends of the range.
std::string reduced_alphabet() {
    using namespace std::string_literals;
    return "\0\x01\t\n\v\f\r $%&'01234567:9@ABCDEZ`abcdez{|}~\x7F\x80\xFF"s;
}

constexpr std::string_view special_bytes = "%|\n\r257Cc0AaDd";

// Calls `check` with every text of exactly `length` bytes of the alphabet; ends at the first one
// that it refuses.
template <typename Check>
void for_every_text(std::string_view alphabet, std::size_t length, const Check& check) {
    std::string text(length, alphabet.front());
    std::string places(length, '\0');
    for (;;) {
        ASSERT_TRUE(check(text)) << testing::PrintToString(text);
        std::size_t position = 0;
        while (position < length) {
            const auto next =
                static_cast<std::size_t>(static_cast<unsigned char>(places[position])) + 1;
            if (next < alphabet.size()) {
                places[position] = static_cast<char>(next);
                text[position] = alphabet[next];
                break;
            }
            places[position] = '\0';
            text[position] = alphabet.front();
            ++position;
        }
        if (position == length) {
            return;
        }
    }
}

template <typename Check>
void for_every_short_text(const Check& check) {
    for (std::size_t length = 0; length <= 2; ++length) {
        for_every_text(all_bytes(), length, check);
    }
    for_every_text(reduced_alphabet(), 3, check);
    for (std::size_t length = 3; length <= 6; ++length) {
        for_every_text(special_bytes, length, check);
    }
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
            if (field.substr(0, row.escape.size()) == row.escape) {
                byte = row.byte;
                length = row.escape.size();
            }
        }
        text += byte;
        field.remove_prefix(length);
    }
    return text;
}

TEST(Codec, LosesNothing) {
    for_every_short_text(
        [](const std::string& text) { return decode_field(escape_field(text)) == text; });
}

TEST(Codec, AnEscapedFieldIsOneFieldOfOneLine) {
    for_every_short_text([](const std::string& text) {
        return escape_field(text).find_first_of("|\n\r") == std::string::npos;
    });
}

TEST(Codec, DecodesAnyTextAsTheTableSays) {
    for_every_short_text(
        [](const std::string& text) { return decode_field(text) == decoded_by_table(text); });
}

TEST(Codec, DecodingNeverLengthensAndNeverEmpties) {
    for_every_short_text([](const std::string& text) {
        const std::string decoded = decode_field(text);
        return decoded.size() <= text.size() && decoded.empty() == text.empty();
    });
}

}  // namespace
