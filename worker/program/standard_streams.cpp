#include "program/standard_streams.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

#if defined(__linux__)
#include <stdio_ext.h>
#endif

void prepare_standard_streams() {
    // A host may start its children with a stream closed. The SDK's next file would take that
    // number, and protocol lines would be written into it. open takes the lowest free number, so
    // the gaps close in order.
    for (int descriptor = 0; descriptor <= 2; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            open("/dev/null", O_RDWR);
        }
    }

#if defined(__linux__)
    // Newer C libraries take every stream's lock in exit, and the reader asleep inside fgets would
    // hold stdin's: every exit would last until the deadline. stdin has one user, so it needs no
    // lock.
    __fsetlocking(stdin, FSETLOCKING_BYCALLER);
#endif
}
