#include "host/camera/uptime.h"

#include <ctime>

namespace host {

Time uptime() {
#if defined(__APPLE__)
    constexpr clockid_t clock = CLOCK_UPTIME_RAW;
#else
    constexpr clockid_t clock = CLOCK_MONOTONIC;
#endif
    timespec now{};
    clock_gettime(clock, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

TimeOfDay time_of_day() {
    return std::chrono::duration_cast<TimeOfDay>(
        std::chrono::system_clock::now().time_since_epoch());
}

}  // namespace host
