#pragma once

// What no application may do: the process stops with one sentence on standard error and abort.

#include <string>

#include "simulator/sdk/lock.h"

namespace camera_sim {

// The sentence goes out with the camera's state behind it.
[[noreturn]] void stop(const std::string& sentence) SIM_REQUIRES(g_lock);

// One line on standard error, for what the user has to know.
void tell(const std::string& sentence);

}  // namespace camera_sim
