#include "host/process/line_stream.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace host {

LineStream::LineStream(Descriptor read_end, Pipe wake_up, const OutputLimits& limits,
                       std::function<void()> cut_off)
    : cut_off_(std::move(cut_off)), backlog_(limits), wake_up_(std::move(wake_up.write_end)) {
    drain_thread_ = std::thread(
        [this, pipe = std::move(read_end), woken = std::move(wake_up.read_end)]() mutable {
            drain(std::move(pipe), std::move(woken));
        });
}

LineStream::~LineStream() {
    close();
    drain_thread_.join();
}

std::optional<Line> LineStream::next(TimePoint deadline) {
    const MutexLock lock(mutex_);
    while (!backlog_.has_line() && !ended_) {
        if (!mutex_.wait_until(changed_, deadline)) {
            break;
        }
    }
    return backlog_.take();
}

bool LineStream::ended() {
    const MutexLock lock(mutex_);
    return ended_ && !backlog_.has_line();
}

std::string LineStream::trouble() {
    const MutexLock lock(mutex_);
    return backlog_.trouble();
}

void LineStream::close() {
    const MutexLock lock(mutex_);
    wake_up_.close();
    while (!ended_) {
        mutex_.wait(changed_);
    }
}

void LineStream::drain(Descriptor read_end, Descriptor woken) {
    std::array<char, 65536> buffer;
    std::array<pollfd, 2> sources{{{read_end.number(), POLLIN, 0}, {woken.number(), POLLIN, 0}}};
    bool within_limits = true;
    while (within_limits) {
        if (poll(sources.data(), sources.size(), -1) < 0) {
            continue;
        }
        if (sources[1].revents != 0) {
            break;
        }
        const ssize_t count = ::read(read_end.number(), buffer.data(), buffer.size());
        const TimePoint at = Clock::now();
        if (count > 0) {
            within_limits = take({buffer.data(), static_cast<std::size_t>(count)}, at);
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    // Before the end is made known, so that a caller who sees it can rely on the pipe being closed.
    read_end.close();
    {
        const MutexLock lock(mutex_);
        backlog_.finish(Clock::now());
        ended_ = true;
    }
    changed_.notify_all();
    if (!within_limits && cut_off_) {
        cut_off_();
    }
}

bool LineStream::take(std::string_view bytes, TimePoint at) {
    bool within_limits = false;
    {
        const MutexLock lock(mutex_);
        within_limits = backlog_.add(bytes, at);
    }
    changed_.notify_all();
    return within_limits;
}

}  // namespace host
