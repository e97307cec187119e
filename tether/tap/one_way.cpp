#include "tether/tap/one_way.h"

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace tap {
namespace {

constexpr short gone = POLLERR | POLLHUP | POLLNVAL;

}  // namespace

OneWay::OneWay(host::Descriptor from, host::Descriptor to)
    : from_(std::move(from)), to_(std::move(to)) {}

// poll() passes over a negative number: an end that hung up would wake it again and again.
pollfd OneWay::source() const {
    return {waiting() == 0 ? from_.number() : -1, POLLIN, 0};
}

// Looked at even when nothing waits: a reader that goes away is to be known at once.
pollfd OneWay::sink() const {
    return {to_.number(), static_cast<short>(waiting() > 0 ? POLLOUT : 0), 0};
}

Step OneWay::step(short at_source, short at_sink) {
    Step step;
    if ((at_sink & gone) == 0 && (at_sink & POLLOUT) != 0) {
        write_some();
    }
    if (to_.is_open() && ((at_sink & gone) != 0 || broken_)) {
        begin_ = end_ = 0;
        from_.close();
        to_.close();
        step.sink_gone = true;
    }
    if (at_source == 0 || !from_.is_open() || waiting() > 0) {
        return step;
    }
    const ssize_t count = ::read(from_.number(), buffer_.data(), buffer_.size());
    if (count > 0) {
        begin_ = 0;
        end_ = static_cast<std::size_t>(count);
        step.bytes = {buffer_.data(), end_};
        if ((looked_at({to_.number(), POLLOUT, 0}) & (gone | POLLOUT)) == POLLOUT) {
            write_some();
        }
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
        from_.close();
        to_.close();
        step.source_ended = true;
    }
    return step;
}

void OneWay::write_some() {
    const ssize_t count = ::write(to_.number(), buffer_.data() + begin_, waiting());
    if (count >= 0) {
        begin_ += static_cast<std::size_t>(count);
    } else {
        broken_ = errno != EINTR && errno != EAGAIN;
    }
}

short looked_at(pollfd wanted) {
    return poll(&wanted, 1, 0) > 0 ? wanted.revents : static_cast<short>(0);
}

}  // namespace tap
