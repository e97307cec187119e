// The few looks at files and descriptors that the worker takes while it starts. It finds itself in
// a complete bundle with its three streams open.

#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/explore/calls/worker_call.h"

namespace {

constexpr char executable[] = "/bundle/Contents/MacOS/sony-worker";

}  // namespace

WORKER_CALL ssize_t __wrap_readlink(const char*, char* path, std::size_t size) {
    const std::size_t length = std::strlen(executable);
    std::memcpy(path, executable, length < size ? length : size);
    return static_cast<ssize_t>(length < size ? length : size);
}

WORKER_CALL int __wrap_stat(const char*, struct stat* status) {
    *status = {};
    return 0;
}

WORKER_CALL int __wrap_fcntl(int, int, ...) {
    return 0;
}

WORKER_CALL int __wrap_open(const char*, int, ...) {
    explore::complain("the worker opens a file");
}
