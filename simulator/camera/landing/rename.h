// Giving a file its name without taking it from another.
#pragma once

#include <string>

namespace camera_sim {

// 0 or an errno value; EEXIST when something has that name, even a link to nowhere. Copies where
// the file system can do no better.
int rename_without_replacing(const std::string& from, const std::string& to);

}  // namespace camera_sim
