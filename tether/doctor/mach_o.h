// The format of macOS: a file for one processor, or a universal one that holds several of those.
#pragma once

#include <vector>

#include "tether/doctor/bytes.h"
#include "tether/doctor/program_file.h"

namespace doctor {

// Empty when the file has another format.
std::vector<Image> read_mach_o(const Bytes& file);

}  // namespace doctor
