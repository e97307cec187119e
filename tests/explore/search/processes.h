#pragma once

#include <cstddef>
#include <functional>

#include "tests/explore/search/scene_search.h"

namespace explore {

// Does `work` for each number below `count`, each in a process of its own and `jobs` at a time.
// `tell` is called in this process with what came of it, in the order in which they end.
void in_processes(std::size_t count, std::size_t jobs,
                  const std::function<void(std::size_t, Findings&)>& work,
                  const std::function<void(std::size_t, const Findings&)>& tell);

}  // namespace explore
