// The clock of everything that the host times: it never jumps, whatever happens to the time of day.
#pragma once

#include <chrono>

namespace host {

using Clock = std::chrono::steady_clock;
using Duration = Clock::duration;
using TimePoint = Clock::time_point;

inline TimePoint after(Duration duration) {
    return Clock::now() + duration;
}

}  // namespace host
