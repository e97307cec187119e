// Lines of several lanes, interleaved anyhow.
#include "tests/worker/runner/playing/lanes.h"

#include <gtest/gtest.h>

namespace {

using namespace transcript;
using std::chrono::milliseconds;

const host::TimePoint start{};

Block block(const std::vector<std::vector<std::string>>& lanes) {
    Block block;
    for (const auto& texts : lanes) {
        block.lanes.emplace_back();
        for (const std::string& text : texts) {
            block.lanes.back().push_back({text, {}});
        }
    }
    return block;
}

// How many of the lines are taken, and whether the block is complete after them.
std::pair<std::size_t, bool> take(const Block& block, const std::vector<std::string>& texts) {
    Lanes lanes(block, start);
    std::size_t taken = 0;
    while (taken < texts.size() && !lanes.complete() && lanes.take({texts[taken], start, true})) {
        ++taken;
    }
    return {taken, lanes.complete()};
}

using Taken = std::pair<std::size_t, bool>;

TEST(LanesTest, LanesMayComeInterleavedAnyhow) {
    const Block two = block({{"a", "b"}, {"x"}});
    EXPECT_EQ(take(two, {"a", "b", "x"}), Taken(3, true));
    EXPECT_EQ(take(two, {"a", "x", "b"}), Taken(3, true));
    EXPECT_EQ(take(two, {"x", "a", "b"}), Taken(3, true));
}

TEST(LanesTest, EachLaneKeepsItsOrder) {
    const Block two = block({{"a", "b"}, {"x"}});
    EXPECT_EQ(take(two, {"b"}), Taken(0, false));
    EXPECT_EQ(take(two, {"a", "a"}), Taken(1, false));
    EXPECT_EQ(take(two, {"a", "b"}), Taken(2, false));
    EXPECT_EQ(take(two, {"a", "y"}), Taken(1, false));
}

TEST(LanesTest, ALineOfSeveralLanesIsTakenForAnyOfThem) {
    // Whichever lane gets the first "a", the rest must still fit.
    const Block alike = block({{"a", "b"}, {"a", "c"}});
    EXPECT_EQ(take(alike, {"a", "c", "a", "b"}), Taken(4, true));
    EXPECT_EQ(take(alike, {"a", "b", "a", "c"}), Taken(4, true));
    EXPECT_EQ(take(alike, {"a", "a", "c", "b"}), Taken(4, true));
    EXPECT_EQ(take(alike, {"a", "b", "c"}), Taken(2, false));
}

TEST(LanesTest, TimesCountFromTheStepBeforeInTheLane) {
    Block timed = block({{"a", "b"}, {"x"}});
    timed.lanes[0][1].not_before = milliseconds(700);
    const auto b_at = [&](milliseconds at) {
        Lanes lanes(timed, start);
        EXPECT_TRUE(lanes.take({"a", start + milliseconds(100), true}));
        EXPECT_TRUE(lanes.take({"x", start + milliseconds(500), true}));
        return lanes.take({"b", start + at, true});
    };
    EXPECT_FALSE(b_at(milliseconds(790)));
    EXPECT_TRUE(b_at(milliseconds(799)));
    EXPECT_TRUE(b_at(milliseconds(5800)));
    EXPECT_FALSE(b_at(milliseconds(5801)));
}

TEST(LanesTest, SaysWhatCouldComeNext) {
    const Block two = block({{"a", "b"}, {"x"}});
    Lanes lanes(two, start);
    EXPECT_EQ(lanes.awaited(), "< a  or  < x");
    lanes.take({"x", start, true});
    EXPECT_EQ(lanes.awaited(), "< a");
}

}  // namespace
