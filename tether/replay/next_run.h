// Which worker of a record a host gets that starts one after the other.
#pragma once

#include <string>

namespace replay {

// Counts the starts of this record by the process that has started this one, from 0, in a file
// between the system's temporary ones.
unsigned count_start(const std::string& record);

}  // namespace replay
