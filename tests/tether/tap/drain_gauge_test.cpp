// When a host counts as one that does not read.
#include "tether/tap/drain_gauge.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using tap::DrainGauge;
using Change = DrainGauge::Change;

host::TimePoint at(int ms) {
    return host::TimePoint(std::chrono::hours(1)) + milliseconds(ms);
}

// Looks as often as a tap does, from behind the one time up to the other. The last look's answer.
Change watched(DrainGauge& gauge, std::size_t unread, int from, int to) {
    Change last = Change::none;
    for (int ms = from; ms < to;) {
        EXPECT_EQ(last, Change::none) << "at " << ms;
        ms = std::min(ms + 100, to);
        last = gauge.look(unread, at(ms));
    }
    return last;
}

TEST(DrainGauge, WhatIsReadIsNoStall) {
    DrainGauge gauge;
    EXPECT_FALSE(gauge.wants_looks());
    gauge.written(100, at(0));
    EXPECT_TRUE(gauge.wants_looks());
    EXPECT_EQ(watched(gauge, 100, 0, 1999), Change::none);
    EXPECT_EQ(gauge.look(0, at(2500)), Change::none);
    EXPECT_FALSE(gauge.wants_looks());
}

TEST(DrainGauge, TwoSecondsWithoutAReadAreAStallAndToldOnce) {
    DrainGauge gauge;
    gauge.written(100, at(0));
    EXPECT_EQ(watched(gauge, 100, 0, 1999), Change::none);
    EXPECT_EQ(gauge.look(100, at(2000)), Change::stalled);
    EXPECT_EQ(watched(gauge, 100, 2000, 9000), Change::none);
    EXPECT_EQ(gauge.silence(at(9500)), milliseconds(9500));
    EXPECT_EQ(gauge.look(40, at(9500)), Change::drained);
    EXPECT_EQ(watched(gauge, 40, 9500, 11499), Change::none);
    EXPECT_EQ(gauge.look(40, at(11500)), Change::stalled) << "the rest waits for as long again";
}

TEST(DrainGauge, WhatIsWrittenMeanwhileEndsNoStall) {
    DrainGauge gauge;
    gauge.written(100, at(0));
    for (int ms = 100; ms < 2000; ms += 100) {
        EXPECT_EQ(gauge.look(100 + static_cast<std::size_t>(ms) - 100, at(ms)), Change::none);
        gauge.written(100 + static_cast<std::size_t>(ms), at(ms));
    }
    EXPECT_EQ(gauge.look(2000, at(2000)), Change::stalled);
}

TEST(DrainGauge, AHostThatReadsSlowlyIsNone) {
    DrainGauge gauge;
    std::size_t unread = 1000;
    gauge.written(unread, at(0));
    for (int ms = 0; unread > 0; ms += 1900) {
        EXPECT_EQ(watched(gauge, unread, ms, ms + 1800), Change::none);
        EXPECT_EQ(gauge.look(--unread, at(ms + 1900)), Change::none);
    }
}

// As with Ctrl-Z on a terminal, or both in the debugger.
TEST(DrainGauge, TheTimeInWhichTheTapWasStoppedIsNotTheHosts) {
    DrainGauge gauge;
    gauge.written(100, at(0));
    EXPECT_EQ(watched(gauge, 100, 0, 1000), Change::none);
    EXPECT_EQ(watched(gauge, 100, 60'000, 60'999), Change::none);
    EXPECT_EQ(gauge.look(100, at(61'100)), Change::stalled);
}

TEST(DrainGauge, TheTimeCountsFromTheFirstByte) {
    DrainGauge gauge;
    EXPECT_EQ(gauge.look(0, at(0)), Change::none);
    gauge.written(1, at(60'000));
    EXPECT_EQ(watched(gauge, 1, 60'000, 61'999), Change::none);
    EXPECT_EQ(gauge.look(1, at(62'000)), Change::stalled);
}

}  // namespace
