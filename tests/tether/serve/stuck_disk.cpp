// A disk that does not answer, for a program that is started with this in LD_PRELOAD: what it asks
// of files below STUCK_BELOW waits for as long as the file STUCK_WHILE exists. Its children are not
// concerned.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

namespace {

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool is_stuck() {
    static const char* const flag = std::getenv("STUCK_WHILE");
    static auto* const access_file = real<int(const char*, int)>("access");
    return flag != nullptr && access_file(flag, F_OK) == 0;
}

void wait_for(std::string_view path) {
    static const char* const below = std::getenv("STUCK_BELOW");
    static const bool concerned =
        std::string_view(program_invocation_short_name) == std::string_view("tether");
    if (below == nullptr || !concerned || path.substr(0, std::string_view(below).size()) != below) {
        return;
    }
    while (is_stuck()) {
        const timespec moment{0, 5'000'000};
        nanosleep(&moment, nullptr);
    }
}

void wait_for_file(int file) {
    char path[4096];
    const ssize_t length =
        readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
    if (length > 0) {
        wait_for({path, static_cast<std::size_t>(length)});
    }
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    wait_for(path);
    return real<int(const char*, int, ...)>("open")(path, flags, mode);
}

int stat(const char* path, struct stat* facts) noexcept {
    wait_for(path);
    return real<int(const char*, struct stat*)>("stat")(path, facts);
}

int statvfs(const char* path, struct statvfs* facts) noexcept {
    wait_for(path);
    return real<int(const char*, struct statvfs*)>("statvfs")(path, facts);
}

int fstatvfs(int file, struct statvfs* facts) noexcept {
    wait_for_file(file);
    return real<int(int, struct statvfs*)>("fstatvfs")(file, facts);
}

int fsync(int file) {
    wait_for_file(file);
    return real<int(int)>("fsync")(file);
}

}  // extern "C"
