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

TEST(FloodGauge, ASecondLaterTheyCountNoMore) {
    host::FloodGauge gauge;
    gauge.add(49'999, 100, milliseconds(0));
    gauge.add(1, 1, milliseconds(1000));
    EXPECT_EQ(gauge.flood(), nullptr);
}

}  // namespace
