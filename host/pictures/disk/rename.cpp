#include "host/pictures/disk/rename.h"

#include <cerrno>
#include <cstdio>

namespace host::pictures {

int rename_without_replacing(int from_folder, const char* from, int to_folder, const char* to) {
#if defined(__APPLE__)
    return ::renameatx_np(from_folder, from, to_folder, to, RENAME_EXCL) == 0 ? 0 : errno;
#elif defined(RENAME_NOREPLACE)
    return ::renameat2(from_folder, from, to_folder, to, RENAME_NOREPLACE) == 0 ? 0 : errno;
#else
    return ENOSYS;
#endif
}

bool knows_no_such_rename(int error) {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EOPNOTSUPP;
}

}  // namespace host::pictures
