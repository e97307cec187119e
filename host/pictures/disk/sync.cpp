#include "host/pictures/disk/sync.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace host::pictures {

int sync_file(int file) {
#if defined(__APPLE__) && defined(F_BARRIERFSYNC)
    // fsync() there reaches the drive's memory only; this also keeps the order of what was written.
    if (::fcntl(file, F_BARRIERFSYNC) == 0) {
        return 0;
    }
#endif
    if (::fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EOPNOTSUPP) {
        return 0;
    }
    return errno;
}

}  // namespace host::pictures
