#include "host/pictures/whole/window.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace host::pictures {

std::span<const std::uint8_t> Window::piece(std::uint64_t at) {
    if (at >= size_) {
        return {};
    }
    if (at < begin_ || at - begin_ >= held_) {
        // Pieces lie on their own grid, so that reading backwards and forwards finds them again.
        begin_ = at - at % bytes_.size();
        held_ = 0;
        const auto wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(bytes_.size(), size_ - begin_));
        while (held_ < wanted) {
            const ssize_t got = ::pread(file_, bytes_.data() + held_, wanted - held_,
                                        static_cast<off_t>(begin_ + held_));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got <= 0) {
                break;
            }
            held_ += static_cast<std::size_t>(got);
        }
    }
    // A file that has shrunk has less.
    const auto offset = static_cast<std::size_t>(std::min<std::uint64_t>(at - begin_, held_));
    return {bytes_.data() + offset, held_ - offset};
}

std::optional<std::uint8_t> Window::byte(std::uint64_t at) {
    const auto bytes = piece(at);
    return bytes.empty() ? std::nullopt : std::optional(bytes.front());
}

std::optional<std::uint64_t> Window::big_endian(std::uint64_t at, unsigned int count) {
    std::uint64_t number = 0;
    for (unsigned int index = 0; index < count; ++index) {
        const auto next = byte(at + index);
        if (!next || at + index < at) {
            return std::nullopt;
        }
        number = number << 8 | *next;
    }
    return number;
}

std::optional<std::uint64_t> Window::little_endian(std::uint64_t at, unsigned int count) {
    std::uint64_t number = 0;
    for (unsigned int index = count; index > 0; --index) {
        const auto next = byte(at + index - 1);
        if (!next || at + index - 1 < at) {
            return std::nullopt;
        }
        number = number << 8 | *next;
    }
    return number;
}

std::uint64_t Window::next_ff(std::uint64_t at) {
    for (;;) {
        const auto bytes = piece(at);
        if (bytes.empty()) {
            return size_;
        }
        if (const void* found = std::memchr(bytes.data(), 0xFF, bytes.size())) {
            return at + static_cast<std::uint64_t>(static_cast<const std::uint8_t*>(found) -
                                                   bytes.data());
        }
        at += bytes.size();
    }
}

}  // namespace host::pictures
