// Draws an afternoon. The same number gives the same one on every machine.
#pragma once

#include <cstdint>

#include "tests/host/afternoons/story.h"

namespace afternoons {

Story draw(std::uint64_t seed);

}  // namespace afternoons
