// The bundle that is looked at: X.app, its Contents, or a build tree laid out like one.
#pragma once

#include <filesystem>
#include <string>

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

}  // namespace doctor
