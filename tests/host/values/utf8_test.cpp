#include "host/values/utf8.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

namespace host {
namespace {

TEST(Utf8Test, IsWholeCharactersWrittenInTheShortestWay) {
    for (const std::string text :
         {"", "plain\x7F", "\xC2\x80\xDF\xBF", "\xE0\xA0\x80\xE1\x80\x80\xED\x9F\xBF\xEF\xBF\xBF",
          "\xF0\x90\x80\x80\xF1\x80\x80\x80\xF1\xBF\xBF\xBF\xF4\x8F\xBF\xBF"}) {
        EXPECT_TRUE(is_utf8(text)) << escape_bytes(text);
    }
    for (const std::string bytes :
         {"\x80", "\xC1\xBF", "\xC2", "\xC2\x7F", "\xC2\xC0", "\xE0\x9F\xBF", "\xE1\x80\xC0",
          "\xE1\x80\x7F", "\xED\xA0\x80", "\xEF\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80"}) {
        EXPECT_FALSE(is_utf8(bytes)) << escape_bytes(bytes);
        EXPECT_TRUE(is_utf8(escape_bytes(bytes))) << escape_bytes(bytes);
        EXPECT_EQ(unescape_bytes(escape_bytes(bytes)), bytes);
    }
    EXPECT_EQ(escape_bytes(std::string_view("\xC3\xAB").substr(0, 1)), "%C3") << "cut short";
}

TEST(Utf8Test, OnlyWhatIsNoCharacterIsEscapedAndThePercentItself) {
    for (const auto& [bytes, text] : {
             std::pair<std::string, std::string>{"Zo\xC3\xAB \xFF%", "Zo\xC3\xAB %FF%25"},
             {std::string("\0\n\"", 3), std::string("\0\n\"", 3)},
             {"\xF0\x9F\x93\xB7\x9A", "\xF0\x9F\x93\xB7%9A"},
             {"%41", "%2541"},
             {"\xA0\xC3", "%A0%C3"},
         }) {
        EXPECT_EQ(escape_bytes(bytes), text);
        EXPECT_EQ(unescape_bytes(text), bytes);
    }
}

TEST(Utf8Test, AnyOtherPercentStaysAsItIs) {
    for (const std::string text : {"%", "%4", "%4g", "%G1", "%4a", "%/0", "%:0", "%@0", "4%"}) {
        EXPECT_EQ(unescape_bytes(text), text);
    }
    EXPECT_EQ(unescape_bytes("%0A%%41B%5x0A"), "\n%AB%5x0A");
    EXPECT_EQ(unescape_bytes(std::string_view("%41").substr(0, 2)), "%4") << "cut short";
}

}  // namespace
}  // namespace host
