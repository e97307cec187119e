// Escaping, decoding and splitting of fields on the host's side.
#include "host/process/fields.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using host::escape_field;
using host::split_fields;
using host::unescape_field;

TEST(Fields, EscapesTheFourBytesAndNoOther) {
    EXPECT_EQ(escape_field("a|b%c\r\nd"), "a%7Cb%25c%0D%0Ad");
    EXPECT_EQ(escape_field(""), "");
    EXPECT_EQ(escape_field("/Bilder/\xC3\xA4 \t~"), "/Bilder/\xC3\xA4 \t~");
    EXPECT_EQ(escape_field("%7C"), "%257C");
}

TEST(Fields, DecodesEitherCaseAndLeavesTheRest) {
    EXPECT_EQ(unescape_field("C:%7cdir%0a"), "C:|dir\n");
    EXPECT_EQ(unescape_field("%0D%0d%25"), "\r\r%");
    EXPECT_EQ(unescape_field("100%"), "100%");
    EXPECT_EQ(unescape_field("%7"), "%7");
    EXPECT_EQ(unescape_field("%zz%41"), "%zz%41");
    EXPECT_EQ(unescape_field("%257C"), "%7C");
}

TEST(Fields, EveryShortTextComesBackFromEscaping) {
    const std::string bytes = "%|\n\r07CAcd\xE2";
    std::vector<std::string> texts{""};
    for (std::size_t next = 0; next < texts.size(); ++next) {
        const std::string text = texts[next];
        ASSERT_EQ(unescape_field(escape_field(text)), text);
        ASSERT_EQ(escape_field(text).find_first_of("|\n\r"), std::string::npos);
        if (text.size() < 4) {
            for (const char byte : bytes) {
                texts.push_back(text + byte);
            }
        }
    }
    EXPECT_EQ(texts.size(), 1u + 11 + 121 + 1331 + 14641);
}

TEST(Fields, SplitsAtEverySeparatorAndKeepsEmptyFields) {
    using Fields = std::vector<std::string>;
    EXPECT_EQ(split_fields("DOWNLOADED|/a/b.JPG"), (Fields{"DOWNLOADED", "/a/b.JPG"}));
    EXPECT_EQ(split_fields("DISCONNECTED|"), (Fields{"DISCONNECTED", ""}));
    EXPECT_EQ(split_fields("|"), (Fields{"", ""}));
    EXPECT_EQ(split_fields("a||b"), (Fields{"a", "", "b"}));
    EXPECT_EQ(split_fields(""), (Fields{""}));
}

}  // namespace
