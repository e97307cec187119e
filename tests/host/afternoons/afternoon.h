// One afternoon: a brain and everything around it, played from a story.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tests/host/afternoons/story.h"
#include "tests/host/afternoons/witness.h"

namespace afternoons {

struct Outcome {
    std::optional<Failure> failure;
    std::vector<std::string> told;  // line by line, when that was asked for
    std::size_t pictures = 0;
    std::size_t complete = 0;
    std::size_t calls = 0;  // of the brain
};

Outcome play(const Story& story, bool tell_it = false);

}  // namespace afternoons
