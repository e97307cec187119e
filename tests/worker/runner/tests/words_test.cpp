// The words of the transcript language.
#include "tests/worker/runner/reading/words.h"

#include <gtest/gtest.h>

namespace {

using namespace transcript;
using std::chrono::milliseconds;

TEST(Words, QuotedTextKnowsItsEscapes) {
    std::string_view rest = R"("a \"b\" \\ \n\r\t\x00\xe4" behind)";
    EXPECT_EQ(take_quoted(rest), std::string("a \"b\" \\ \n\r\t\0\xE4", 13));
    EXPECT_EQ(rest, " behind");
    for (std::string_view broken : {"", "bare", R"("open)", R"("\q")", R"("\x1")", R"("\)"}) {
        EXPECT_EQ(take_quoted(broken), std::nullopt) << broken;
    }
}

TEST(Words, BytesAreJoinedRepeatedAndCounted) {
    EXPECT_EQ(read_bytes(R"("a" "b\n")"), "ab\n");
    EXPECT_EQ(read_bytes(R"("x" * 3 "y"*2)"), "xxxyy");
    EXPECT_EQ(read_bytes(R"("line {n}\n" * 3)"), "line 1\nline 2\nline 3\n");
    EXPECT_EQ(read_bytes(R"("{n}")"), "{n}");
    EXPECT_EQ(read_bytes(R"("x" * 5000)")->size(), 5000u);
    for (const std::string_view broken : {"", "bare", R"("a" b)", R"("a" *)", R"("a" * b)"}) {
        EXPECT_EQ(read_bytes(broken), std::nullopt) << broken;
    }
}

TEST(Words, DurationsHaveAUnit) {
    EXPECT_EQ(read_duration("250ms"), milliseconds(250));
    EXPECT_EQ(read_duration("2s"), milliseconds(2000));
    EXPECT_EQ(read_duration("1.5s"), milliseconds(1500));
    for (const std::string_view broken : {"", "5", "s", ".s", "1.2.3s", "5min", "-1s"}) {
        EXPECT_EQ(read_duration(broken), std::nullopt) << broken;
    }
}

TEST(Words, APauseIsTakenOffTheFront) {
    std::string_view rest = "+700ms STATUS|x";
    EXPECT_EQ(take_pause(rest), milliseconds(700));
    EXPECT_EQ(rest, "STATUS|x");
    rest = "+soon STATUS|x";
    EXPECT_EQ(take_pause(rest), std::nullopt);
    EXPECT_EQ(rest, "+soon STATUS|x");
}

TEST(Words, WordsAreBareOrQuoted) {
    EXPECT_EQ(read_words(R"( "{dir}" x  "a b" )"), (std::vector<std::string>{"{dir}", "x", "a b"}));
    EXPECT_EQ(read_words(R"(x "open)"), std::nullopt);
    EXPECT_EQ(read_words(""), std::vector<std::string>{});
}

TEST(Words, CommasInQuotedTextsPartNothing) {
    EXPECT_EQ(split_list(R"(SetSaveInfo "/a, \"b" "" -1 ,Release)"),
              (std::vector<std::string_view>{R"(SetSaveInfo "/a, \"b" "" -1)", "Release"}));
}

}  // namespace
