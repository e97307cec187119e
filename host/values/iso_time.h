// A time of day as it is told: "2024-05-01T12:34:56.789Z".
#pragma once

#include <string>

#include "host/values/time.h"

namespace host {

std::string iso_time(TimeOfDay time);

}  // namespace host
