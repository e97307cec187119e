// The fields of a line, case by case.

#include "protocol/fields.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

struct Text {
    std::string before;
    std::string after;
};

TEST(EscapeField, ReplacesFourBytesAndNoOther) {
    const Text table[] = {
        {"", ""},
        {"a|b%c\r\nd", "a%7Cb%25c%0D%0Ad"},
        {"%", "%25"},
        {"|", "%7C"},
        {"\n", "%0A"},
        {"\r", "%0D"},
        {"%7C", "%257C"},
        {"%25", "%2525"},
        {"||", "%7C%7C"},
        {"/Users/x/Pictures", "/Users/x/Pictures"},
        {" a\tb ", " a\tb "},
        {"Füße — 写真", "Füße — 写真"},
        {"\x80\xFF\x01\x7F", "\x80\xFF\x01\x7F"},
        {"a\0|b"s, "a\0%7Cb"s},
        {"/|at the start and the end|", "/%7Cat the start and the end%7C"},
    };
    for (const Text& row : table) {
        EXPECT_EQ(escape_field(row.before), row.after);
    }
}

TEST(DecodeField, UndoesWholeAndKnownEscapesOnly) {
    const Text table[] = {
        {"", ""},
        {"C:%7cdir%0a", "C:|dir\n"},
        {"%7C%0A%0D%25", "|\n\r%"},
        {"%7c%0a%0d%25", "|\n\r%"},
        {"100%", "100%"},
        {"%zz", "%zz"},
        {"%41", "%41"},
        {"%7", "%7"},
        {"%2", "%2"},
        {"%0", "%0"},
        {"%", "%"},
        {"%%", "%%"},
        {"%%7C", "%|"},
        {"%%25", "%%"},
        {"%257C", "%7C"},
        {"%2525", "%25"},
        {"%7%7C", "%7|"},
        {"%0%0A", "%0\n"},
        {"%7C7C", "|7C"},
        {"%7B%0B%0C%24", "%7B%0B%0C%24"},
        {"%C7%A0%D0%52", "%C7%A0%D0%52"},
        {"%7\0C"s, "%7\0C"s},
        {"\0%7C"s, "\0|"s},
        {"plain", "plain"},
        {"写真%7C", "写真|"},
        {"a%7", "a%7"},
        {"a%7C", "a|"},
    };
    for (const Text& row : table) {
        EXPECT_EQ(decode_field(row.before), row.after);
    }
}

TEST(SplitFields, KeepsEveryFieldAndEveryByte) {
    struct Split {
        std::string line;
        std::vector<std::string> fields;
    };
    const Split table[] = {
        {"", {""}},
        {"CONNECT", {"CONNECT"}},
        {"|", {"", ""}},
        {"||", {"", "", ""}},
        {"SET_SAVE_DEST|", {"SET_SAVE_DEST", ""}},
        {"|disk", {"", "disk"}},
        {"CONNECT|disk", {"CONNECT", "disk"}},
        {"a||b", {"a", "", "b"}},
        {"a|b|c|", {"a", "b", "c", ""}},
        {" a | b ", {" a ", " b "}},
        {"a\t|\rb", {"a\t", "\rb"}},
        {"a%7Cb|c", {"a%7Cb", "c"}},
        {"a\0b|c"s, {"a\0b"s, "c"}},
    };
    for (const Split& row : table) {
        EXPECT_EQ(split_fields(row.line), row.fields) << row.line;
    }
}

}  // namespace
