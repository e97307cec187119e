#include "host/values/iso_time.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(IsoTimeTest, ATimeOfDayIsToldInUtcWithMilliseconds) {
    EXPECT_EQ(iso_time(TimeOfDay(0)), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(iso_time(TimeOfDay(1'709'210'096'789)), "2024-02-29T12:34:56.789Z");
    EXPECT_EQ(iso_time(TimeOfDay(1'714'567'890'123)), "2024-05-01T12:51:30.123Z");
}

}  // namespace
}  // namespace host
