#include "host/camera/uptime.h"

#include "host/process/clock.h"

namespace host {

Time uptime() {
    return Clock::now().time_since_epoch();
}

TimeOfDay time_of_day() {
    return std::chrono::duration_cast<TimeOfDay>(
        std::chrono::system_clock::now().time_since_epoch());
}

}  // namespace host
