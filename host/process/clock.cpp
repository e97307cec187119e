#include "host/process/clock.h"

#include <ctime>

namespace host {

TimePoint Clock::now() noexcept {
#if defined(__APPLE__)
    constexpr clockid_t clock = CLOCK_UPTIME_RAW;
#else
    constexpr clockid_t clock = CLOCK_MONOTONIC;
#endif
    timespec now{};
    clock_gettime(clock, &now);
    return TimePoint(std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
}

}  // namespace host
