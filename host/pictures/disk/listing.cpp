#include "host/pictures/disk/listing.h"

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace host::pictures {

int list_folder(int folder, const std::function<bool(const char*)>& each) {
    // Of its own: a descriptor that is only copied shares the place in the listing.
    const int opened = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) {
        return errno;
    }
    DIR* const entries = ::fdopendir(opened);
    if (entries == nullptr) {
        const int error = errno;
        ::close(opened);
        return error;
    }
    int error = 0;
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(entries);
        if (entry == nullptr) {
            error = errno;
            break;
        }
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0 &&
            !each(entry->d_name)) {
            break;
        }
    }
    ::closedir(entries);
    return error;
}

}  // namespace host::pictures
