#include "tether/doctor/sdk_library.h"

#include <array>
#include <string_view>
#include <vector>

#include "tether/doctor/regular_file.h"

namespace doctor {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view sdk_name = "Cr_Core";
constexpr std::string_view only_in_the_simulated = "CAMERA_SIM_SCENE";

// What the loader puts in front of a path that begins with one of these words.
fs::path replace_prefix(const std::string& path, const fs::path& folder) {
    constexpr std::array<std::string_view, 4> prefixes{"$ORIGIN", "${ORIGIN}", "@executable_path",
                                                       "@loader_path"};
    for (const std::string_view prefix : prefixes) {
        if (path.starts_with(prefix)) {
            return folder.string() + path.substr(prefix.size());
        }
    }
    return path;
}

std::vector<fs::path> places(const std::string& library, const Image& worker,
                             const fs::path& folder) {
    constexpr std::string_view by_run_path = "@rpath/";
    const bool searched = library.starts_with(by_run_path);
    if (!searched && library.find('/') != std::string::npos) {
        return {replace_prefix(library, folder)};
    }
    std::vector<fs::path> found;
    found.reserve(worker.run_paths.size());
    for (const std::string& run_path : worker.run_paths) {
        found.push_back(replace_prefix(run_path, folder) /
                        (searched ? library.substr(by_run_path.size()) : library));
    }
    return found;
}

}  // namespace

std::string right_run_path(ProgramFile::Format format) {
    return format == ProgramFile::Format::elf ? "$ORIGIN/../Frameworks/SonySDK"
                                              : "@executable_path/../Frameworks/SonySDK";
}

std::optional<std::string> sdk_library_name(const Image& worker) {
    for (const std::string& library : worker.libraries) {
        if (fs::path(library).filename().string().find(sdk_name) != std::string::npos) {
            return library;
        }
    }
    return std::nullopt;
}

fs::path sdk_library(const Bundle& bundle, const Image& worker, const std::string& name) {
    std::error_code failure;
    // The loader counts from where the program really is.
    const fs::path folder = fs::weakly_canonical(bundle.worker, failure).parent_path();
    const auto candidates = places(name, worker, folder);
    for (const fs::path& candidate : candidates) {
        if (fs::exists(candidate, failure)) {
            return candidate.lexically_normal();
        }
    }
    return candidates.empty() ? fs::path(name) : candidates.front().lexically_normal();
}

bool is_simulated(const fs::path& library) {
    std::string why;
    const auto file = RegularFile::open(library, why);
    return file && file->contains(only_in_the_simulated);
}

}  // namespace doctor
