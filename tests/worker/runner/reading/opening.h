// The steps that every transcript shares: how a worker starts, unless the transcript shows that
// itself, and how it ends.
#pragma once

#include <vector>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

std::vector<Step> opening_steps(const Transcript& transcript);
std::vector<Step> closing_steps(const Transcript& transcript);

}  // namespace transcript
