#include "host/values/iso_time.h"

#include <chrono>
#include <cstdio>

namespace host {

std::string iso_time(TimeOfDay time) {
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const year_month_day date{sys_days(day)};
    const hh_mm_ss clock{time - day};
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int(date.year()),
                  unsigned(date.month()), unsigned(date.day()), int(clock.hours().count()),
                  int(clock.minutes().count()), int(clock.seconds().count()),
                  int(clock.subseconds().count()));
    return text;
}

}  // namespace host
