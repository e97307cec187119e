// What a worker said just before it ended.
#include "host/camera/last_words.h"

#include <chrono>
#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

TEST(LastWords, AreTheLastLineBeforeTheEnd) {
    host::LastWords words;
    EXPECT_EQ(words.before(1s), "");
    words.hear("one", 10s);
    words.hear("two", 10s);
    words.hear("", 10s);
    EXPECT_EQ(words.before(10s), "two");
    EXPECT_EQ(words.before(12s), "two");
}

TEST(LastWords, HaveNothingToDoWithAnEndLongAfter) {
    host::LastWords words;
    words.hear("a warning", 10s);
    EXPECT_EQ(words.before(12001ms), "");
}

// The line is a piece of what was read at once.
TEST(LastWords, HaveNothingOfWhatFollowsThemInMemory) {
    for (const std::string& line : {std::string("two"), std::string(300, 'x')}) {
        const std::string read = line + std::string(300, '\x80');
        host::LastWords words;
        words.hear(std::string_view(read).substr(0, line.size()), 0s);
        EXPECT_EQ(words.before(0s), line);
    }
}

TEST(LastWords, AreCutToASentenceAndThroughNoCharacter) {
    host::LastWords words;
    words.hear(std::string(300, 'x'), 0s);
    EXPECT_EQ(words.before(0s), std::string(300, 'x'));
    words.hear(std::string(299, 'x') + "\xC3\xBD!", 0s);
    EXPECT_EQ(words.before(0s), std::string(299, 'x') + "...");
    words.hear(std::string(400, '\x80'), 0s);
    EXPECT_EQ(words.before(0s), "...") << "no character at all";
}

}  // namespace
