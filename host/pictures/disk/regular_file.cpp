#include "host/pictures/disk/regular_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace host::pictures {

Descriptor open_regular(int folder, const char* name, int flags, int& error) {
    Descriptor file(::openat(folder, name, flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY,
                             S_IRUSR | S_IWUSR));
    if (!file.is_open()) {
        // A link, and a pipe without a reader.
        error = errno == ELOOP || errno == ENXIO ? EINVAL : errno;
        return {};
    }
    struct stat facts {};
    if (::fstat(file.number(), &facts) != 0) {
        error = errno;
        return {};
    }
    if (!S_ISREG(facts.st_mode)) {
        error = EINVAL;
        return {};
    }
    error = 0;
    return file;
}

Descriptor open_folder(int folder, const char* name, int& error) {
    Descriptor opened(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    error = opened.is_open() ? 0 : errno;
    return opened;
}

}  // namespace host::pictures
