#include "tether/serve/wake_up.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace serve {

WakeUp::WakeUp() {
    auto made = host::make_pipe();
    if (!made) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    pipe_ = std::move(*made);
    host::make_non_blocking(pipe_.read_end);
    host::make_non_blocking(pipe_.write_end);
}

void WakeUp::wake() {
    // A pipe that is full wakes as well.
    [[maybe_unused]] const ssize_t count = ::write(pipe_.write_end.number(), "", 1);
}

void WakeUp::clear() {
    char bytes[256];
    while (::read(pipe_.read_end.number(), bytes, sizeof bytes) > 0) {}
}

}  // namespace serve
