#include "tests/host/pictures/disk_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace disk_calls {

std::function<int(std::string_view call)> before;
std::function<int()> before_reading;
bool reads_in_pieces = false;
bool no_exclusive_rename = false;

namespace {

bool refused(std::string_view call) {
    const int error = before ? before(call) : 0;
    if (error != 0) {
        errno = error;
    }
    return error != 0;
}

}  // namespace
}  // namespace disk_calls

using disk_calls::refused;

extern "C" {

int __real_openat(int folder, const char* name, int flags, ...);
int __real_mkdir(const char* name, mode_t mode);
int __real_mkdirat(int folder, const char* name, mode_t mode);
ssize_t __real_write(int file, const void* bytes, size_t count);
ssize_t __real_pread(int file, void* bytes, size_t count, off_t at);
ssize_t __real_pwrite(int file, const void* bytes, size_t count, off_t at);
int __real_ftruncate(int file, off_t size);
int __real_fsync(int file);
int __real_renameat(int from_folder, const char* from, int to_folder, const char* to);
int __real_renameat2(int from_folder, const char* from, int to_folder, const char* to,
                     unsigned int flags);
int __real_unlinkat(int folder, const char* name, int flags);

int __wrap_openat(int folder, const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return refused("openat") ? -1 : __real_openat(folder, name, flags, mode);
}

int __wrap_mkdir(const char* name, mode_t mode) {
    return refused("mkdir") ? -1 : __real_mkdir(name, mode);
}

int __wrap_mkdirat(int folder, const char* name, mode_t mode) {
    return refused("mkdirat") ? -1 : __real_mkdirat(folder, name, mode);
}

ssize_t __wrap_write(int file, const void* bytes, size_t count) {
    if (!disk_calls::before) {
        return __real_write(file, bytes, count);
    }
    return refused("write") ? -1 : __real_write(file, bytes, count > 20 ? count / 2 : count);
}

ssize_t __wrap_pread(int file, void* bytes, size_t count, off_t at) {
    const int error = disk_calls::before_reading ? disk_calls::before_reading() : 0;
    if (error != 0) {
        errno = error;
        return -1;
    }
    return __real_pread(file, bytes, disk_calls::reads_in_pieces ? (count + 1) / 2 : count, at);
}

ssize_t __wrap_pwrite(int file, const void* bytes, size_t count, off_t at) {
    return refused("pwrite") ? -1 : __real_pwrite(file, bytes, count, at);
}

int __wrap_ftruncate(int file, off_t size) {
    return refused("ftruncate") ? -1 : __real_ftruncate(file, size);
}

int __wrap_fsync(int file) {
    if (!disk_calls::before) {
        return __real_fsync(file);
    }
    return refused("fsync") ? -1 : 0;
}

int __wrap_renameat(int from_folder, const char* from, int to_folder, const char* to) {
    return refused("renameat") ? -1 : __real_renameat(from_folder, from, to_folder, to);
}

int __wrap_renameat2(int from_folder, const char* from, int to_folder, const char* to,
                     unsigned int flags) {
    if (refused("renameat2")) {
        return -1;
    }
    if (disk_calls::no_exclusive_rename) {
        errno = EINVAL;
        return -1;
    }
    return __real_renameat2(from_folder, from, to_folder, to, flags);
}

int __wrap_unlinkat(int folder, const char* name, int flags) {
    return refused("unlinkat") ? -1 : __real_unlinkat(folder, name, flags);
}

}  // extern "C"
