// From when on a worker's output is a flood.
#include "host/camera/flood_gauge.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

TEST(FloodGauge, FiftyThousandLinesWithinASecondAreAFlood) {
    host::FloodGauge gauge;
    for (int moment = 0; moment < 49; ++moment) {
        gauge.add(1000, 10'000, milliseconds(20 * moment));
    }
    gauge.add(999, 10'000, milliseconds(985));
    EXPECT_EQ(gauge.flood(), nullptr);
    gauge.add(1, 10, milliseconds(990));
    EXPECT_STREQ(gauge.flood(), "50,000 lines within 1 s");
}

TEST(FloodGauge, ThirtyTwoMebibytesWithinASecondAreAFlood) {
    host::FloodGauge gauge;
    gauge.add(1, (32u << 20) - 1, milliseconds(5));
    EXPECT_EQ(gauge.flood(), nullptr);
    gauge.add(0, 1, milliseconds(1004));
    EXPECT_STREQ(gauge.flood(), "32 MiB within 1 s");
}

// A loose cable makes thousands of lines, for hours.
TEST(FloodGauge, AsManyLinesInALongerTimeAreNone) {
    host::FloodGauge gauge;
    for (int moment = 0; moment < 1000; ++moment) {
        gauge.add(490, 300'000, milliseconds(10 * moment));
        EXPECT_EQ(gauge.flood(), nullptr);
    }
}

TEST(FloodGauge, OnlyTheLastSecondCounts) {
    for (const bool in_bytes : {false, true}) {
        const std::size_t most = in_bytes ? 32u << 20 : 50'000;
        host::FloodGauge gauge;
        const auto add = [&](std::size_t number, host::Time at) {
            gauge.add(in_bytes ? 0 : number, in_bytes ? number : 0, at);
        };
        add(most / 4, milliseconds(0));
        add(most / 4, milliseconds(5));
        add(most / 2 - 1, milliseconds(500));
        EXPECT_EQ(gauge.flood(), nullptr);
        add(most / 2, milliseconds(1000));
        EXPECT_EQ(gauge.flood(), nullptr) << "what came first is a second old";
        add(1, milliseconds(1000));
        EXPECT_NE(gauge.flood(), nullptr);
    }
}

TEST(FloodGauge, WhatIsReadWithinAHundredthOfASecondIsForgottenTogether) {
    for (const int end : {1009, 1010}) {
        host::FloodGauge gauge;
        gauge.add(1, 0, milliseconds(0));
        gauge.add(1, 0, milliseconds(10));
        gauge.add(49'990, 0, milliseconds(19));
        gauge.add(10, 0, milliseconds(end));
        EXPECT_EQ(gauge.flood() != nullptr, end == 1009) << end;
    }
}

TEST(FloodGauge, ASecondLaterTheyCountNoMore) {
    host::FloodGauge gauge;
    gauge.add(49'999, 100, milliseconds(0));
    gauge.add(1, 1, milliseconds(1000));
    EXPECT_EQ(gauge.flood(), nullptr);
}

}  // namespace
