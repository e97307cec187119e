// The format of macOS: a file for one processor, or a universal one that holds several of those.
#pragma once

#include <vector>

#include "host/doctor/bytes.h"
#include "host/doctor/program_file.h"

namespace doctor {

// Empty when the file has another format.
std::vector<Image> read_mach_o(const Bytes& file);

}  // namespace doctor
