// Moments as the host's side counts them: since an arbitrary start, on a clock that stands still
// while the machine sleeps (CLOCK_MONOTONIC on Linux, CLOCK_UPTIME_RAW on macOS). Whoever has the
// clock tells the time; a value never looks at one.
#pragma once

#include <chrono>

namespace host {

using Time = std::chrono::nanoseconds;

// The time of day, since 1970 in UTC.
using TimeOfDay = std::chrono::milliseconds;

}  // namespace host
