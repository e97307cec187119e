// The SDK's library as the worker's program names it, and as the loader finds it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tether/doctor/bundle.h"
#include "tether/doctor/program_file.h"

namespace doctor {

// The run path that finds the SDK wherever the bundle is put.
std::string right_run_path(ProgramFile::Format format);

// What the worker calls the SDK's library; nothing when it needs no library of that name.
std::optional<std::string> sdk_library_name(const Image& worker);

// The file that the loader takes for it, or for a missing one the first place where it looks.
std::filesystem::path sdk_library(const Bundle& bundle, const Image& worker,
                                  const std::string& name);

// The virtual camera's library names the variables that it reads; no other has a use for them.
bool is_simulated(const std::filesystem::path& library);

}  // namespace doctor
