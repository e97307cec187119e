// How a worker's bytes become lines.
#include "host/camera/line_cutter.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

class LineCutterTest : public testing::Test {
  protected:
    void add(std::string_view bytes) {
        cutter_.cut(
            bytes, [this](std::string_view line) { lines_.emplace_back(line); },
            [this] { lines_.emplace_back("(too long)"); });
    }

    host::LineCutter cutter_{8};
    Lines lines_;
};

TEST_F(LineCutterTest, LinesComeWhole) {
    add("one\ntw");
    EXPECT_EQ(lines_, (Lines{"one"}));
    add("");
    add("o\n\nthree\r\nfour");
    EXPECT_EQ(lines_, (Lines{"one", "two", "", "three\r"}));
}

TEST_F(LineCutterTest, ALineOfTheGreatestLengthIsKept) {
    add("12345678\n1234");
    add("5678\n");
    EXPECT_EQ(lines_, (Lines{"12345678", "12345678"}));
}

TEST_F(LineCutterTest, ALineThatIsTooLongIsSaidOnceAndLeftOut) {
    add("123456789\nnext\n");
    add("12345");
    add("6789");
    add("more and more");
    add("end\nlast\n");
    EXPECT_EQ(lines_, (Lines{"(too long)", "next", "(too long)", "last"}));
}

}  // namespace
