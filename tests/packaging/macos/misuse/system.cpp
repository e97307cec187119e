// A named pipe in an open folder: in the system since macOS 13.0.
#include <sys/stat.h>

bool newer_system(int folder) {
#if defined(MISUSE)
    return mkfifoat(folder, "pipe", 0600) == 0;
#else
    return mkdirat(folder, "folder", 0700) == 0;
#endif
}
