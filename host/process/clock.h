// The clock of everything that the host times: it never jumps, whatever happens to the time of day,
// and stands still while the machine sleeps. A worker sleeps too: its time to answer, or to end, is
// what it had the machine for, and a lid that was closed for an hour is no hang. That a machine has
// slept shows by the time of day, which goes on.
#pragma once

#include <chrono>

namespace host {

struct Clock {
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<Clock>;
    static constexpr bool is_steady = true;

    // CLOCK_MONOTONIC on Linux, CLOCK_UPTIME_RAW on macOS, where std::chrono::steady_clock and
    // CLOCK_MONOTONIC go on in sleep.
    static time_point now() noexcept;
};

using Duration = Clock::duration;
using TimePoint = Clock::time_point;

inline TimePoint after(Duration duration) {
    return Clock::now() + duration;
}

}  // namespace host
