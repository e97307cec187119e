#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace explore {

// Looks for the mistake that was planted in each of these workers, ever more thoroughly, and
// prints what it found and after how many runs. The result is 0 when all were found in time.
int hunt_planted(const std::vector<std::string>& workers, std::size_t jobs);

}  // namespace explore
