// What Zig links into a program for a C library older than 2.33, which has stat() and its siblings
// not as functions, sets an errno of its own: a file that is not there would be there. These set
// the library's. The kernel's layout is that of struct stat on both processors.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" {

[[gnu::visibility("hidden")]] int fstatat(int folder, const char* path, struct stat* facts,
                                          int flags) noexcept {
    return static_cast<int>(syscall(SYS_newfstatat, folder, path, facts, flags));
}

[[gnu::visibility("hidden")]] int stat(const char* path, struct stat* facts) noexcept {
    return fstatat(AT_FDCWD, path, facts, 0);
}

[[gnu::visibility("hidden")]] int lstat(const char* path, struct stat* facts) noexcept {
    return fstatat(AT_FDCWD, path, facts, AT_SYMLINK_NOFOLLOW);
}

[[gnu::visibility("hidden")]] int fstat(int descriptor, struct stat* facts) noexcept {
    return static_cast<int>(syscall(SYS_fstat, descriptor, facts));
}

}  // extern "C"
