// What the runner prints of each transcript.
#pragma once

#include <string>

#include "host/process/clock.h"
#include "tests/worker/runner/playing/performance.h"

namespace transcript {

std::string passed_text(const std::string& name, host::Duration took);
std::string failed_text(const std::string& name, const Failure& failure);

}  // namespace transcript
