// One line of a record, written and read.
#include "tether/conversation/record_line.h"

#include <gtest/gtest.h>

namespace {

using tether::read_record_line;
using tether::RecordLine;
using tether::written;

constexpr std::chrono::milliseconds at{1234};

TEST(RecordLine, ATextStandsAsItIs) {
    EXPECT_EQ(written({at, '>', "CONNECT|card"}), "   1.234 > CONNECT|card");
    EXPECT_EQ(written({at, '<', "LOG|[SONY] a — b\t\\x"}), "   1.234 < LOG|[SONY] a — b\t\\x");
    EXPECT_EQ(written({std::chrono::hours(3000), '#', ""}), "10800000.000 # ");
}

TEST(RecordLine, WhatNoTextFileHoldsIsEscaped) {
    using std::string_literals::operator""s;
    EXPECT_EQ(written({at, '>', "A\rB\0C\\"s}), R"(   1.234 >\ A\x0DB\x00C\\)");
    EXPECT_EQ(written({at, '<', "\xFF—"}), R"(   1.234 <\ \xFF\xE2\x80\x94)");
    EXPECT_EQ(written({at, '<', "\x1B[0m—"}), R"(   1.234 <\ \x1B[0m—)");
    EXPECT_EQ(written({at, '<', "half a li", false}), R"(   1.234 <\ half a li\)");
}

TEST(RecordLine, WhatWasWrittenIsRead) {
    for (int first = 0; first < 256; ++first) {
        for (const char second : {'\\', 'x', '\0', '\xA9', 'A'}) {
            for (const bool whole : {true, false}) {
                const std::string text{static_cast<char>(first), second};
                const auto line = read_record_line(written({at, '<', text, whole}));
                ASSERT_TRUE(line) << first;
                EXPECT_EQ(line->text, text);
                EXPECT_EQ(line->whole, whole);
                EXPECT_EQ(line->at, at);
                EXPECT_EQ(line->mark, '<');
            }
        }
    }
}

TEST(RecordLine, ATrailingSpaceMayBeMissing) {
    const auto line = read_record_line("0.000 >");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "");
    EXPECT_TRUE(line->whole);
}

TEST(RecordLine, OtherLinesAreNone) {
    for (const char* text :
         {"", "x", "   1.234", "   1.234 ", "   1.234 ? a", "   1.234 >a", "1. > a", "1 > a",
          "1.a > a", ".123 > a", "1.2345 > a", "-1.000 > a", "1234567890123.000 > a",
          R"(1.000 >\ \y)", R"(1.000 >\ \x4)", R"(1.000 >\ \xG0)", R"(1.000 >\a)"}) {
        EXPECT_FALSE(read_record_line(text)) << text;
    }
}

}  // namespace
