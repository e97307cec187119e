#include "simulator/camera/landing/rename.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

#include "simulator/camera/pictures/file.h"

namespace camera_sim {
namespace {

bool has_no_such_call(int error) {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EOPNOTSUPP;
}

// For a file system that knows neither a rename that replaces nothing nor a second name.
int copy_into_new_file(const std::string& from, const std::string& to) {
    const int source = open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (source < 0) {
        return errno;
    }
    PictureFile copy(to.c_str());
    int error = copy.error();
    std::vector<char> buffer(std::size_t{1} << 16);
    while (error == 0) {
        const ssize_t got = read(source, buffer.data(), buffer.size());
        if (got == 0) {
            break;
        }
        if (got < 0) {
            error = errno == EINTR ? 0 : errno;
        } else if (!copy.write(buffer.data(), static_cast<std::size_t>(got))) {
            error = copy.error();
        }
    }
    close(source);
    return error != 0 ? error : copy.finish();
}

}  // namespace

int rename_without_replacing(const std::string& from, const std::string& to) {
#if defined(__APPLE__)
    const int renamed = renamex_np(from.c_str(), to.c_str(), RENAME_EXCL);
#elif defined(RENAME_NOREPLACE)
    const int renamed = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
#else
    errno = ENOSYS;
    const int renamed = -1;
#endif
    if (renamed == 0 || !has_no_such_call(errno)) {
        return renamed == 0 ? 0 : errno;
    }
    int error = link(from.c_str(), to.c_str()) == 0 ? 0 : errno;
    if (error == EPERM || error == EMLINK || has_no_such_call(error)) {
        error = copy_into_new_file(from, to);
    }
    if (error == 0) {
        unlink(from.c_str());
    }
    return error;
}

}  // namespace camera_sim
