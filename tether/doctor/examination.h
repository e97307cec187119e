// The doctor's whole round through a bundle.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "tether/doctor/finding.h"
#include "tether/doctor/system.h"

namespace doctor {

// Tells each finding when it has it: starting a worker takes a moment.
void examine(const std::filesystem::path& bundle,
             const std::optional<std::filesystem::path>& folder, const System& system,
             const std::function<void(const Finding&)>& tell);

// The same on standard output; the exit status.
int examine_aloud(const std::filesystem::path& bundle,
                  const std::optional<std::filesystem::path>& folder);

}  // namespace doctor
