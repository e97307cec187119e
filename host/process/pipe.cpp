#include "host/process/pipe.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

namespace host {
namespace {

// Holds SIGPIPE back from this thread and swallows the one that a write drew.
class SigpipeHeldBack {
  public:
    SigpipeHeldBack() {
        sigset_t pending;
        sigpending(&pending);
        was_pending_ = sigismember(&pending, SIGPIPE) == 1;
        sigemptyset(&only_sigpipe_);
        sigaddset(&only_sigpipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &only_sigpipe_, &mask_before_);
    }
    ~SigpipeHeldBack() {
        sigset_t pending;
        sigpending(&pending);
        if (!was_pending_ && sigismember(&pending, SIGPIPE) == 1) {
            int taken = 0;
            sigwait(&only_sigpipe_, &taken);
        }
        pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
    }
    SigpipeHeldBack(const SigpipeHeldBack&) = delete;
    SigpipeHeldBack& operator=(const SigpipeHeldBack&) = delete;

  private:
    sigset_t only_sigpipe_{};
    sigset_t mask_before_{};
    bool was_pending_ = false;
};

// A host that was started with a standard stream closed would get that number here, and setting up
// the child's own streams would then close the pipe under it.
Descriptor above_standard_streams(Descriptor end) {
    if (end.number() > STDERR_FILENO) {
        return end;
    }
    return Descriptor(fcntl(end.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

}  // namespace

void Descriptor::close() {
    if (is_open()) {
        ::close(std::exchange(number_, -1));
    }
}

std::optional<Pipe> make_pipe() {
    int ends[2];
#if defined(__APPLE__)
    // Without pipe2 there is a moment in which the ends are inheritable; spawn() there closes what
    // it was not told of.
    if (pipe(ends) != 0) {
        return std::nullopt;
    }
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETNOSIGPIPE, 1);
#else
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return std::nullopt;
    }
#endif
    Pipe made{above_standard_streams(Descriptor(ends[0])),
              above_standard_streams(Descriptor(ends[1]))};
    if (!made.read_end.is_open() || !made.write_end.is_open()) {
        return std::nullopt;
    }
    return made;
}

void make_non_blocking(const Descriptor& descriptor) {
    fcntl(descriptor.number(), F_SETFL, fcntl(descriptor.number(), F_GETFL) | O_NONBLOCK);
}

bool write_all(const Descriptor& pipe, std::string_view bytes, TimePoint deadline) {
    const SigpipeHeldBack held_back;
    while (!bytes.empty()) {
        const ssize_t written = write(pipe.number(), bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd room{pipe.number(), POLLOUT, 0};
            if (poll(&room, 1, poll_timeout(deadline)) == 0) {
                return false;
            }
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

int poll_timeout(TimePoint deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, 1'000'000'000));
}

}  // namespace host
