// The format of Linux, with 64 bits and the least significant byte first.
#pragma once

#include <optional>

#include "tether/doctor/bytes.h"
#include "tether/doctor/program_file.h"

namespace doctor {

std::optional<Image> read_elf(const Bytes& file);

}  // namespace doctor
