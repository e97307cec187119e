#include "host/brain/session/restarts.h"

#include <gtest/gtest.h>

namespace host::brain {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

TEST(RestartsTest, FiveLossesIn3MinutesAreReplacedAtOnceAndTheSixthAfterAMinute) {
    const Times times;
    Restarts restarts(times);
    for (int loss = 0; loss < 5; ++loss) {
        EXPECT_EQ(restarts.lost(seconds(10 * loss)), seconds(10 * loss));
    }
    EXPECT_EQ(restarts.lost(seconds(50)), seconds(110));
}

TEST(RestartsTest, LossesThatLieFurtherApartAreReplacedAtOnce) {
    const Times times;
    Restarts restarts(times);
    for (int loss = 0; loss < 100; ++loss) {
        EXPECT_EQ(restarts.lost(seconds(36 * loss)), seconds(36 * loss));
    }
}

TEST(RestartsTest, OnceTooManyItStaysAtOneAMinuteUntilAWorkerHasLived3Minutes) {
    const Times times;
    Restarts restarts(times);
    Time now{};
    for (int loss = 0; loss < 6; ++loss) {
        restarts.lost(now);
    }
    for (int loss = 0; loss < 20; ++loss) {
        now += minutes(1);
        EXPECT_EQ(restarts.lost(now), now + minutes(1));
    }
    restarts.ready(now);
    now += minutes(3);
    for (int loss = 0; loss < 5; ++loss) {
        EXPECT_EQ(restarts.lost(now), now);
    }
    EXPECT_EQ(restarts.lost(now), now + minutes(1)) << "none of these was ready";
}

}  // namespace
}  // namespace host::brain
