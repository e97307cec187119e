#pragma once

#include <cstddef>
#include <string>
#include <vector>

// Schedules that once showed a mistake, in a file: one a line, the scene and then its deviations,
// below a comment with the name of the mistake. The results are 0 when all passed.
namespace explore {

// Plays them with the worker, which must stand them.
int replay_all(const std::string& worker, const std::string& file);

// Plays each with the worker that has its mistake, which it must still show: turns move when the
// worker changes, and a schedule that has drifted proves nothing any more.
int replay_planted(const std::vector<std::string>& workers, const std::string& file,
                   std::size_t jobs);

}  // namespace explore
