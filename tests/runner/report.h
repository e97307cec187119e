// What the runner prints of each transcript.
#pragma once

#include <string>

#include "host/clock.h"
#include "tests/runner/performance.h"

namespace transcript {

std::string passed_text(const std::string& name, host::Duration took);
std::string failed_text(const std::string& name, const Failure& failure);

}  // namespace transcript
