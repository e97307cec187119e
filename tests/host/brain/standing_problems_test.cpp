#include "host/brain/standing_problems.h"

#include <gtest/gtest.h>

namespace host::brain {
namespace {

TEST(StandingProblemsTest, OneOfACodeStandsAndTheSameOneIsNoNews) {
    StandingProblems problems;
    EXPECT_TRUE(problems.raise({Code::camera_lost, "gone", {}, {}}));
    EXPECT_FALSE(problems.raise({Code::camera_lost, "gone", {}, {}}));
    EXPECT_TRUE(problems.raise({Code::camera_lost, "gone again", 1, {}}));
    ASSERT_EQ(problems.all().size(), 1U);
    EXPECT_EQ(problems.all()[0].text, "gone again");
}

TEST(StandingProblemsTest, OneThatIsClearedNoLongerStands) {
    StandingProblems problems;
    problems.raise({Code::card_missing, "", {}, {}});
    EXPECT_TRUE(problems.stands(Code::card_missing));
    EXPECT_TRUE(problems.clear(Code::card_missing));
    EXPECT_FALSE(problems.clear(Code::card_missing));
    EXPECT_FALSE(problems.stands(Code::card_missing));
}

TEST(StandingProblemsTest, EveryCodeHasItsOwnWord) {
    for (std::size_t one = 0; one < codes.size(); ++one) {
        EXPECT_EQ(static_cast<std::size_t>(codes[one].code), one);
        for (std::size_t other = 0; other < one; ++other) {
            EXPECT_NE(codes[one].word, codes[other].word);
        }
    }
    EXPECT_EQ(word(Code::disk_nearly_full), "disk-nearly-full");
    EXPECT_EQ(word(Code::expired), "expired");
}

}  // namespace
}  // namespace host::brain
