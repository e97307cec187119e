// The fuzzer's bytes, drawn one after the other as what a run needs. When they have run out every
// draw gives the plainest value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

class Bytes {
  public:
    Bytes(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool left() const {
        return next_ != end_;
    }
    std::uint8_t byte() {
        return left() ? *next_++ : std::uint8_t{0};
    }
    bool yes() {
        return (byte() & 1) != 0;
    }
    // 0 to `most`.
    unsigned number(unsigned most) {
        return byte() % (most + 1);
    }
    template <typename Table>
    const auto& one_of(const Table& table) {
        return table[byte() % std::size(table)];
    }
    // Four bytes, or one of those that the worker knows or that lie at the ends of the range.
    std::uint32_t code() {
        static constexpr std::uint32_t known[] = {
            0,      1,          2,          3,          4,          0x8402,    0x8703,
            0x0001, 0x0106,     0x0119,     0x011A,     0x0507,     0x0708,    0x070D,
            0x8000, 0x0002008C, 0x00020002, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        const std::uint8_t which = byte();
        if (which < 0xE0) {
            return known[which % std::size(known)];
        }
        const std::uint32_t high = byte();
        const std::uint32_t low = byte();
        return high << (which & 0x18) | low;
    }
    // Up to `most` bytes, whichever they are.
    std::string text(unsigned most) {
        std::string bytes;
        for (unsigned length = number(most); length > 0 && left(); --length) {
            bytes += static_cast<char>(byte());
        }
        return bytes;
    }

  private:
    const std::uint8_t* next_;
    const std::uint8_t* end_;
};
