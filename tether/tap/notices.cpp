#include "tether/tap/notices.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace tap {
namespace {

constexpr std::size_t most_bytes = std::size_t{8} << 20;

// Both ends are the same program: written as it lies in memory.
struct Head {
    std::int64_t at;
    std::int64_t number;
    std::uint32_t size;
    Kind kind;
};

bool read_all(const host::Descriptor& pipe, char* to, std::size_t size) {
    while (size > 0) {
        const ssize_t count = ::read(pipe.number(), to, size);
        if (count > 0) {
            to += count;
            size -= static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EINTR) {
            return false;
        }
    }
    return true;
}

}  // namespace

NoticeWriter::NoticeWriter(host::Descriptor pipe) : pipe_(std::move(pipe)) {
    host::make_non_blocking(pipe_);
}

void NoticeWriter::tell(Kind kind, host::TimePoint at, std::int64_t number,
                        std::string_view bytes) {
    if (waiting_.size() - told_ > most_bytes && !full_) {
        full_ = true;
        append(Kind::out_of_memory, at, 0, {});
    }
    if (!full_ || kind == Kind::ended) {
        append(kind, at, number, bytes);
    }
    flush();
}

void NoticeWriter::append(Kind kind, host::TimePoint at, std::int64_t number,
                          std::string_view bytes) {
    Head head{};
    head.at = at.time_since_epoch().count();
    head.number = number;
    head.size = static_cast<std::uint32_t>(bytes.size());
    head.kind = kind;
    char raw[sizeof head];
    std::memcpy(raw, &head, sizeof head);
    if (told_ > waiting_.size() / 2) {
        waiting_.erase(0, std::exchange(told_, 0));
    }
    waiting_.append(raw, sizeof raw).append(bytes);
}

pollfd NoticeWriter::room() const {
    return {waiting_.empty() ? -1 : pipe_.number(), POLLOUT, 0};
}

void NoticeWriter::flush() {
    while (pipe_.is_open() && told_ < waiting_.size()) {
        const ssize_t count =
            ::write(pipe_.number(), waiting_.data() + told_, waiting_.size() - told_);
        if (count >= 0) {
            told_ += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            return;
        } else if (errno != EINTR) {
            pipe_.close();  // nobody is there to tell
        }
    }
    waiting_.clear();
    told_ = 0;
}

bool NoticeWriter::finish(host::Duration patience) {
    for (flush(); !waiting_.empty(); flush()) {
        pollfd wanted = room();
        if (poll(&wanted, 1, host::poll_timeout(host::after(patience))) == 0) {
            return false;
        }
    }
    pipe_.close();
    return true;
}

bool read_notice(const host::Descriptor& pipe, Notice& notice) {
    Head head{};
    char raw[sizeof head];
    if (!read_all(pipe, raw, sizeof raw)) {
        return false;
    }
    std::memcpy(&head, raw, sizeof head);
    notice.kind = head.kind;
    notice.at = host::TimePoint(host::Duration(head.at));
    notice.number = head.number;
    notice.bytes.resize(head.size);
    return read_all(pipe, notice.bytes.data(), head.size);
}

}  // namespace tap
