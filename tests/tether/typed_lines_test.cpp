// What is typed becomes lines, however it comes.
#include "tether/conversation/typed_lines.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

Lines lines_of(const std::string& bytes, std::size_t cut) {
    Lines lines;
    tether::TypedLines typed([&](const std::string& line) { lines.push_back(line); });
    for (std::size_t at = 0; at < bytes.size(); at += cut) {
        typed.add(std::string_view(bytes).substr(at, cut));
    }
    typed.finish();
    return lines;
}

TEST(TypedLines, AreCutAtLineFeedsAndTheLastNeedsNone) {
    for (const std::size_t cut : {1u, 2u, 100u}) {
        EXPECT_EQ(lines_of("CONNECT\n\nQUIT", cut), (Lines{"CONNECT", "", "QUIT"}));
        EXPECT_EQ(lines_of("", cut), Lines{});
    }
}

TEST(TypedLines, LoseTheCarriageReturnsOfAFileFromElsewhere) {
    for (const std::size_t cut : {1u, 2u, 100u}) {
        EXPECT_EQ(lines_of("CONNECT\r\nPRI\rME\r\r\nQUIT\r", cut),
                  (Lines{"CONNECT", "PRI\rME", "QUIT"}));
    }
}

TEST(TypedLines, AreKeptWholeAsLongAsTheyCanBeCommands) {
    const std::string longest(4095, 'x');
    EXPECT_EQ(lines_of(longest + "\r\nafter\n", 1000), (Lines{longest, "after"}));
    EXPECT_EQ(lines_of(longest + "y\n", 1000), Lines{longest + "y"});
    // What was cut off behind the carriage returns must not make a command of the rest.
    const std::string cut = longest + std::string(64, '\r') + "y\nafter\n";
    EXPECT_GT(lines_of(cut, 1000).at(0).size(), longest.size());
    EXPECT_EQ(lines_of(cut, 1000).at(1), "after");
}

TEST(TypedLines, AnEndlessOneTakesNoMemory) {
    std::size_t longest = 0;
    tether::TypedLines typed([&](const std::string& line) { longest = line.size(); });
    const std::string bytes(65'536, 'x');
    for (int round = 0; round < 1000; ++round) {
        typed.add(bytes);
    }
    typed.add("\n");
    EXPECT_GT(longest, 4095u) << "it must still be too long for a command";
    EXPECT_LT(longest, 8192u);
}

}  // namespace
