#include "program/executable_path.h"

#include <cstddef>

#if defined(__APPLE__)
#include <cstdint>
#include <mach-o/dyld.h>
#else
#include <unistd.h>
#endif

namespace {

constexpr std::size_t longest_path = 4096;

}  // namespace

std::optional<std::string> executable_path() {
    char path[longest_path];
#if defined(__APPLE__)
    std::uint32_t size = sizeof path;
    if (_NSGetExecutablePath(path, &size) != 0) {
        return std::nullopt;
    }
    return std::string(path);
#else
    // readlink cuts a longer path without a word; a full buffer may be such a cut.
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length < 0 || static_cast<std::size_t>(length) == sizeof path) {
        return std::nullopt;
    }
    return std::string(path, static_cast<std::size_t>(length));
#endif
}
