#include "host/camera/inbox.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace host {
namespace {

Pipe make_wake_up() {
    std::optional<Pipe> pipe = make_pipe();
    if (!pipe) {
        throw std::system_error(errno, std::generic_category(), "cannot make a pipe");
    }
    // What does not wait is not interrupted either. The other end always has room: no more bytes
    // lie in it than threads post at once.
    make_non_blocking(pipe->read_end);
    return std::move(*pipe);
}

}  // namespace

Inbox::Inbox() : wake_up_(make_wake_up()) {}

void Inbox::post(Message message) {
    bool first = false;
    {
        const MutexLock lock(mutex_);
        first = messages_.empty();
        messages_.push_back(std::move(message));
    }
    // One byte wakes the camera's thread for all that follow until it takes them.
    if (first) {
        [[maybe_unused]] const ssize_t written = write(wake_up_.write_end.number(), "", 1);
    }
}

// The byte is read before the messages are taken: one that comes between is woken for once too
// often, never once too little.
std::vector<Message> Inbox::take() {
    std::array<char, 64> bytes;
    [[maybe_unused]] const ssize_t count =
        read(wake_up_.read_end.number(), bytes.data(), bytes.size());
    const MutexLock lock(mutex_);
    return std::exchange(messages_, {});
}

}  // namespace host
