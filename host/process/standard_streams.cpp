#include "host/process/standard_streams.h"

#include <cerrno>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

namespace host {

void open_closed_standard_streams() {
    // A new file gets the lowest free number, so in this order each gets the one that was closed.
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) == -1 && errno == EBADF) {
            ::open("/dev/null", O_RDWR);
        }
    }
}

}  // namespace host
