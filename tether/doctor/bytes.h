// Numbers and texts in a file. What lies beyond the end reads as 0 and as no text, so that a broken
// file needs no care from who reads it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace doctor {

// A file of any size, of which a small piece at a time is held.
class Window {
  public:
    // Puts up to `count` bytes from the offset into `bytes`, and says how many; fewer where the
    // file ends, sooner than it was said when it has been shortened since.
    using Read = std::function<std::size_t(std::uint64_t offset, char* bytes, std::size_t count)>;

    Window(std::uint64_t size, Read read, std::size_t width = 4096)
        : size_(size), read_(std::move(read)), held_(width) {}

    std::uint64_t size() const {
        return size_;
    }

    // The bytes from the offset on, never none and as far as they are held. Zeros stand where the
    // file has none.
    std::string_view at(std::uint64_t offset) {
        const auto place = static_cast<std::size_t>(offset % held_.size());
        if (offset - place != begin_ || !filled_) {
            begin_ = offset - place;
            filled_ = true;
            const std::size_t count = read_(begin_, held_.data(), held_.size());
            std::fill(held_.begin() + static_cast<std::ptrdiff_t>(count), held_.end(), '\0');
        }
        return std::string_view(held_.data(), held_.size()).substr(place);
    }

  private:
    std::uint64_t size_;
    Read read_;
    std::vector<char> held_;
    std::uint64_t begin_ = 0;
    bool filled_ = false;
};

// A part of what the window looks at.
class Bytes {
  public:
    // No path that a loader could open is longer.
    static constexpr std::size_t longest_text = 4096;

    explicit Bytes(Window& window) : Bytes(window, 0, window.size()) {}

    // An unsigned number of `size` bytes, the least significant first.
    std::uint64_t number(std::uint64_t offset, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned place = size; place > 0; --place) {
            value = value << 8 | byte(offset, place - 1);
        }
        return value;
    }

    // The same, the most significant first.
    std::uint64_t big_endian(std::uint64_t offset, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned place = 0; place < size; ++place) {
            value = value << 8 | byte(offset, place);
        }
        return value;
    }

    // Up to the next zero, the end of this part or the longest that counts.
    std::string text(std::uint64_t offset) const {
        std::string text;
        const Bytes rest = part(offset, longest_text);
        while (text.size() < rest.size_) {
            const std::string_view held =
                window_->at(rest.begin_ + text.size())
                    .substr(0, static_cast<std::size_t>(rest.size_) - text.size());
            text += held.substr(0, held.find('\0'));
            if (held.find('\0') != std::string_view::npos) {
                break;
            }
        }
        return text;
    }

    // What of it there is.
    Bytes part(std::uint64_t offset, std::uint64_t size) const {
        const std::uint64_t skipped = std::min(offset, size_);
        return Bytes(*window_, begin_ + skipped, std::min(size, size_ - skipped));
    }

    Bytes from(std::uint64_t offset) const {
        return part(offset, size_);
    }

    std::uint64_t size() const {
        return size_;
    }

  private:
    Bytes(Window& window, std::uint64_t begin, std::uint64_t size)
        : window_(&window), begin_(begin), size_(size) {}

    unsigned char byte(std::uint64_t offset, std::uint64_t place) const {
        if (offset >= size_ || place >= size_ - offset) {
            return 0;
        }
        return static_cast<unsigned char>(window_->at(begin_ + offset + place).front());
    }

    Window* window_;
    std::uint64_t begin_;
    std::uint64_t size_;
};

}  // namespace doctor
