#include "tests/host/pictures/disk_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace disk_calls {

std::function<int(std::string_view call)> before;
std::function<int()> before_reading;
std::function<int(std::string_view call)> before_looking;
std::function<void(struct statvfs& facts)> on_facts;
bool no_exclusive_rename = false;

namespace {

bool refuse(int error) {
    if (error > 0) {
        errno = error;
    }
    return error != 0;
}

bool refused(std::string_view call) {
    return refuse(before ? before(call) : 0);
}

bool looking_refused(std::string_view call) {
    return refuse(before_looking ? before_looking(call) : 0);
}

// What comes after the flags of open() and openat(); none of the store's files is for a process
// that another thread starts meanwhile.
mode_t mode_of(int flags, va_list rest) {
    EXPECT_NE(flags & O_CLOEXEC, 0);
    return (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
}

// Of so many bytes, as many as it may take or give.
template <typename Call>
ssize_t bytes(int error, size_t count, const Call& call) {
    if (error < 0) {
        count = std::min(count, static_cast<size_t>(-1 - error));
        return count == 0 ? 0 : call(count);
    }
    return refuse(error) ? -1 : call(count);
}

}  // namespace
}  // namespace disk_calls

using disk_calls::looking_refused;
using disk_calls::refused;

extern "C" {

int __real_open(const char* name, int flags, ...);
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
int __real_flock(int file, int operation);
int __real_fstat(int file, struct stat* facts);
int __real_fstatat(int folder, const char* name, struct stat* facts, int flags);
int __real_fstatvfs(int file, struct statvfs* facts);
DIR* __real_fdopendir(int folder);
struct dirent* __real_readdir(DIR* folder);

int __wrap_openat(int folder, const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = disk_calls::mode_of(flags, rest);
    va_end(rest);
    return refused("openat") ? -1 : __real_openat(folder, name, flags, mode);
}

int __wrap_open(const char* name, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = disk_calls::mode_of(flags, rest);
    va_end(rest);
    return __real_open(name, flags, mode);
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
    return disk_calls::bytes(disk_calls::before("write"), count > 20 ? count / 2 : count,
                             [&](size_t taken) { return __real_write(file, bytes, taken); });
}

ssize_t __wrap_pread(int file, void* bytes, size_t count, off_t at) {
    return disk_calls::bytes(disk_calls::before_reading ? disk_calls::before_reading() : 0, count,
                             [&](size_t given) { return __real_pread(file, bytes, given, at); });
}

ssize_t __wrap_pwrite(int file, const void* bytes, size_t count, off_t at) {
    return disk_calls::bytes(disk_calls::before ? disk_calls::before("pwrite") : 0, count,
                             [&](size_t taken) { return __real_pwrite(file, bytes, taken, at); });
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

int __wrap_flock(int file, int operation) {
    return looking_refused("flock") ? -1 : __real_flock(file, operation);
}

int __wrap_fstat(int file, struct stat* facts) {
    return looking_refused("fstat") ? -1 : __real_fstat(file, facts);
}

int __wrap_fstatat(int folder, const char* name, struct stat* facts, int flags) {
    return looking_refused("fstatat") ? -1 : __real_fstatat(folder, name, facts, flags);
}

int __wrap_fstatvfs(int file, struct statvfs* facts) {
    const int result = looking_refused("fstatvfs") ? -1 : __real_fstatvfs(file, facts);
    if (result == 0 && disk_calls::on_facts) {
        disk_calls::on_facts(*facts);
    }
    return result;
}

DIR* __wrap_fdopendir(int folder) {
    return looking_refused("fdopendir") ? nullptr : __real_fdopendir(folder);
}

struct dirent* __wrap_readdir(DIR* folder) {
    return looking_refused("readdir") ? nullptr : __real_readdir(folder);
}

}  // extern "C"
