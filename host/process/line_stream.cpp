#include "host/process/line_stream.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace host {

LineStream::LineStream(Descriptor read_end, Pipe wake_up) : wake_up_(std::move(wake_up.write_end)) {
    drain_thread_ = std::thread(
        [this, pipe = std::move(read_end), woken = std::move(wake_up.read_end)]() mutable {
            drain(std::move(pipe), std::move(woken));
        });
}

LineStream::~LineStream() {
    close();
}

std::optional<Line> LineStream::next(TimePoint deadline) {
    std::unique_lock lock(mutex_);
    changed_.wait_until(lock, deadline, [this] { return !lines_.empty() || ended_; });
    if (lines_.empty()) {
        return std::nullopt;
    }
    Line line = std::move(lines_.front());
    lines_.pop_front();
    return line;
}

bool LineStream::ended() {
    const std::lock_guard lock(mutex_);
    return ended_ && lines_.empty();
}

void LineStream::close() {
    wake_up_.close();
    if (drain_thread_.joinable()) {
        drain_thread_.join();
    }
}

void LineStream::drain(Descriptor read_end, Descriptor woken) {
    std::array<char, 65536> buffer;
    std::array<pollfd, 2> sources{{{read_end.number(), POLLIN, 0}, {woken.number(), POLLIN, 0}}};
    for (;;) {
        if (poll(sources.data(), sources.size(), -1) < 0) {
            continue;
        }
        if (sources[1].revents != 0) {
            break;
        }
        const ssize_t count = read(read_end.number(), buffer.data(), buffer.size());
        const TimePoint at = Clock::now();
        if (count > 0) {
            take({buffer.data(), static_cast<std::size_t>(count)}, at);
        } else if (count == 0 || errno != EINTR) {
            break;
        }
    }
    // Before the end is made known, so that who has seen it can rely on the pipe being closed.
    read_end.close();
    {
        const std::lock_guard lock(mutex_);
        if (!unfinished_.empty()) {
            lines_.push_back({std::move(unfinished_), Clock::now(), false});
        }
        ended_ = true;
    }
    changed_.notify_all();
}

void LineStream::take(std::string_view bytes, TimePoint at) {
    {
        const std::lock_guard lock(mutex_);
        for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos;) {
            unfinished_ += bytes.substr(0, end);
            lines_.push_back({std::exchange(unfinished_, {}), at, true});
            bytes.remove_prefix(end + 1);
        }
        unfinished_ += bytes;
    }
    changed_.notify_all();
}

}  // namespace host
