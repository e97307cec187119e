#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace explore {

// Looks for the mistake that was planted in each of these workers, ever more thoroughly, and
// prints what it found and after how many runs. The result is 0 when all were found in time.
int hunt_planted(const std::vector<std::string>& workers, std::size_t jobs);

// Plays the schedules of a file, one a line: the scene, then its deviations. A `#` starts a
// comment. The result is 0 when the worker stood all of them.
int replay_all(const std::string& worker, const std::string& file);

}  // namespace explore
