// The clocks that a camera goes by.
#pragma once

#include "host/values/time.h"

namespace host {

// Stands still while the machine sleeps.
Time uptime();

TimeOfDay time_of_day();

}  // namespace host
