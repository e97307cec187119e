// The clock that the host times by.
#include "host/process/clock.h"

#include <ctime>
#include <gtest/gtest.h>

namespace host {
namespace {

// A Mac that has slept since it was started shows the difference; Linux has no other steady clock
// to take by mistake.
TEST(Clock, IsTheOneThatStandsStillWhileTheMachineSleeps) {
#if defined(__APPLE__)
    constexpr clockid_t clock = CLOCK_UPTIME_RAW;
#else
    constexpr clockid_t clock = CLOCK_MONOTONIC;
#endif
    const auto its_time = [&] {
        timespec now{};
        clock_gettime(clock, &now);
        return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
    };
    const auto before = its_time();
    const auto now = Clock::now().time_since_epoch();
    EXPECT_LE(before, now);
    EXPECT_LE(now, its_time());
}

}  // namespace
}  // namespace host
