// The closing words of a shoot.
#pragma once

#include <filesystem>
#include <string>

#include "tether/shoot/shoot.h"

namespace tether {

std::string summary(const Report& report, const std::filesystem::path& folder);

// "24.1 MB"
std::string in_bytes(std::uintmax_t bytes);

}  // namespace tether
