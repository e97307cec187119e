#include "host/process/beside_this_program.h"

#if defined(__APPLE__)
#include <cstdint>
#include <mach-o/dyld.h>
#endif
#include <system_error>

namespace host {
namespace {

std::filesystem::path this_program() {
    std::error_code unreadable;
#if defined(__APPLE__)
    char path[4096];
    std::uint32_t size = sizeof path;
    if (_NSGetExecutablePath(path, &size) != 0) {
        return {};
    }
    return std::filesystem::canonical(path, unreadable);
#else
    return std::filesystem::canonical("/proc/self/exe", unreadable);
#endif
}

}  // namespace

std::filesystem::path worker_beside_this_program() {
    return bundle_beside_this_program() / "Contents/MacOS/sony-worker";
}

std::filesystem::path folder_of_this_program() {
    return this_program().parent_path();
}

std::filesystem::path bundle_beside_this_program() {
    return folder_of_this_program().parent_path();
}

}  // namespace host
