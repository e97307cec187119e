#include "tether/rpc/text.h"

#include <gtest/gtest.h>

#include "tether/rpc/json.h"

namespace rpc {
namespace {

TEST(ValidText, Utf8StaysAsItIs) {
    for (const char* text :
         {"", "plain", "100%", "%41", "Gru\xCC\x88n", "\xE2\x82\xAC", "\xF0\x9F\x93\xB7",
          "\xED\x9F\xBF", "\xEE\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(valid_text(text), text);
    }
    EXPECT_EQ(valid_text(std::string("a\0b", 3)), std::string("a\0b", 3));
}

TEST(ValidText, OtherBytesAreEscapedAndThePercentSignWithThem) {
    EXPECT_EQ(valid_text("Caf\xE9.JPG"), "Caf%E9.JPG");
    EXPECT_EQ(valid_text("50% Caf\xE9 \xC3\xA9"), "50%25 Caf%E9 \xC3\xA9");
    EXPECT_EQ(valid_text("\xC3"), "%C3");
    EXPECT_EQ(valid_text("\xC3("), "%C3(");
    EXPECT_EQ(valid_text("\xE2\x82"), "%E2%82");
    EXPECT_EQ(valid_text("\xC0\xAF"), "%C0%AF");         // a longer "/"
    EXPECT_EQ(valid_text("\xE0\x80\xAF"), "%E0%80%AF");  // and a longer one
    EXPECT_EQ(valid_text("\xED\xA0\x80"), "%ED%A0%80");  // half of a pair of UTF-16
    EXPECT_EQ(valid_text("\xF0\x80\x80\x80"), "%F0%80%80%80");
    EXPECT_EQ(valid_text("\xF4\x90\x80\x80"), "%F4%90%80%80");  // beyond the last
    EXPECT_EQ(valid_text("\xF5\x80\x80\x80"), "%F5%80%80%80");
    EXPECT_EQ(valid_text("\x80"), "%80");
}

// What is called valid here must be so for who writes it.
TEST(ValidText, EveryTwoAndThreeBytesCanBeWritten) {
    for (unsigned int first = 0x80; first < 0x100; ++first) {
        for (unsigned int second = 0x7F; second < 0xC1; ++second) {
            for (const unsigned int third : {0x20U, 0x7FU, 0x80U, 0x8FU, 0x90U, 0xBFU, 0xC0U}) {
                const std::string bytes{static_cast<char>(first), static_cast<char>(second),
                                        static_cast<char>(third), '\x80'};
                EXPECT_NO_THROW(Json(valid_text(bytes)).dump());
            }
        }
    }
}

}  // namespace
}  // namespace rpc
