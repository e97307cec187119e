// What a finding shows of names and words that nobody chose.
#include "tether/doctor/finding.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

TEST(Finding, ShowsTextAsItIs) {
    for (const std::string text : {"", "plain", "~ \\ \"quoted\"", "für Ж 写真 📷"}) {
        EXPECT_EQ(doctor::ok(text).text, text);
    }
}

TEST(Finding, WritesOutWhatIsNoText) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string("a\0b", 3), "a\\x00b"},
        {"\x1B[31m", "\\x1B[31m"},
        {"two\nlines\r\t", "two\\x0Alines\\x0D\\x09"},
        {"\x7F", "\\x7F"},
        {"\xC2\x9B"
         "2J",
         "\\xC2\\x9B2J"},            // a control character of two bytes
        {"\x80\xBF", "\\x80\\xBF"},  // continues nothing
        {"\xC3", "\\xC3"},           // cut off
        {"\xE2\x82"
         "a",
         "\\xE2\\x82a"},
        {"\xC0\xAF", "\\xC0\\xAF"},  // longer than need be
        {"\xE0\x80\xAF", "\\xE0\\x80\\xAF"},
        {"\xED\xA0\x80", "\\xED\\xA0\\x80"},           // half of a pair
        {"\xF4\x90\x80\x80", "\\xF4\\x90\\x80\\x80"},  // beyond the last
        {"\xFF\xFE", "\\xFF\\xFE"},
    };
    for (const auto& [text, shown] : cases) {
        EXPECT_EQ(doctor::warning(text, "").text, shown);
        EXPECT_EQ(doctor::failure("", "a\n\tb").advice, "a\n\tb");
    }
}

TEST(Finding, QuotesAPathForACommandToCopy) {
    EXPECT_EQ(doctor::in_shell_quotes("/a b"), "'/a b'");
    EXPECT_EQ(doctor::in_shell_quotes("it's; rm -rf $HOME"), "'it'\\''s; rm -rf $HOME'");
}

TEST(Finding, IsCutWhenItIsTooLongToRead) {
    EXPECT_EQ(doctor::ok(std::string(4000, 'a')).text, std::string(4000, 'a'));
    EXPECT_EQ(doctor::ok(std::string(1 << 20, 'a')).text, std::string(4000, 'a') + "…");
    EXPECT_EQ(doctor::failure("", std::string(1 << 20, 'a')).advice, std::string(4000, 'a') + "…");
}

}  // namespace
