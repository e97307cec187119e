// The bundle that is looked at: X.app, its Contents, or a build tree laid out like one.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/doctor/program_file.h"

namespace doctor {

struct Bundle {
    std::filesystem::path contents;
    std::filesystem::path worker;
};

// The bundle at a path, or the one that a worker at that path lies in. What is missing in it is for
// the checks to say.
Bundle bundle_at(const std::filesystem::path& path);

// As short as it can be said: from the bundle's Contents where it lies in there.
std::string name_in(const Bundle& bundle, const std::filesystem::path& file);

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
