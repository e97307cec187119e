// A file's bytes, read a piece at a time: a file that shrinks or fails under the reader has no
// bytes there, where a mapping would end the process.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace host::pictures {

class Window {
  public:
    // `size` is the file's when it was opened; nothing behind it is read.
    Window(int file, std::uint64_t size) : file_(file), size_(size) {}

    std::uint64_t size() const {
        return size_;
    }

    // Nothing behind the end.
    std::optional<std::uint8_t> byte(std::uint64_t at);

    // `count` bytes, at most 8, as one number; nothing when one of them lies behind the end.
    std::optional<std::uint64_t> big_endian(std::uint64_t at, unsigned int count);
    std::optional<std::uint64_t> little_endian(std::uint64_t at, unsigned int count);

    // Where the next 0xFF stands; size() when there is none.
    std::uint64_t next_ff(std::uint64_t at);

  private:
    // Bytes from `at` to the end of the piece that holds it; none behind the end.
    std::span<const std::uint8_t> piece(std::uint64_t at);

    const int file_;
    const std::uint64_t size_;
    std::uint64_t begin_ = 0;
    std::size_t held_ = 0;
    std::array<std::uint8_t, std::size_t{32} * 1024> bytes_{};
};

}  // namespace host::pictures
