#include "tests/simulator/system_calls.h"

#if defined(__linux__)
#include <cerrno>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace system_calls {

std::function<int()> before_rename;
std::function<int()> before_link;
std::function<void()> after_bind;
std::atomic<int> accepts_failed{0};

void leave_alone() {
    before_rename = nullptr;
    before_link = nullptr;
    after_bind = nullptr;
}

}  // namespace system_calls

#if defined(__linux__)

// Found by the library before the C library's own.

extern "C" int renameat2(int from_folder, const char* from, int to_folder, const char* to,
                         unsigned flags) noexcept {
    if (const int error = system_calls::before_rename ? system_calls::before_rename() : 0) {
        errno = error;
        return -1;
    }
    return static_cast<int>(syscall(SYS_renameat2, from_folder, from, to_folder, to, flags));
}

extern "C" int link(const char* from, const char* to) noexcept {
    if (const int error = system_calls::before_link ? system_calls::before_link() : 0) {
        errno = error;
        return -1;
    }
    constexpr int here = -100;  // AT_FDCWD
    return static_cast<int>(syscall(SYS_linkat, here, from, here, to, 0));
}

extern "C" int bind(int socket, const sockaddr* address, socklen_t size) noexcept {
    const auto result = static_cast<int>(syscall(SYS_bind, socket, address, size));
    if (result == 0 && system_calls::after_bind) {
        system_calls::after_bind();
    }
    return result;
}

extern "C" int accept(int socket, sockaddr* address, socklen_t* size) {
    const auto result = static_cast<int>(syscall(SYS_accept4, socket, address, size, 0));
    system_calls::accepts_failed += result < 0;
    return result;
}

#endif
