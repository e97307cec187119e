// Numbers and texts in the bytes of a file. What lies beyond the end reads as 0 and as no text, so
// that a broken file needs no care from who reads it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace doctor {

class Bytes {
  public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

    // An unsigned number of `size` bytes, the least significant first.
    std::uint64_t number(std::uint64_t offset, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned place = size; place > 0; --place) {
            value = value << 8 | byte(offset + place - 1);
        }
        return value;
    }

    // The same, the most significant first.
    std::uint64_t big_endian(std::uint64_t offset, unsigned size) const {
        std::uint64_t value = 0;
        for (unsigned place = 0; place < size; ++place) {
            value = value << 8 | byte(offset + place);
        }
        return value;
    }

    // Up to the next zero.
    std::string text(std::uint64_t offset) const {
        const Bytes rest = from(offset);
        return std::string(rest.bytes_.substr(0, rest.bytes_.find('\0')));
    }

    Bytes from(std::uint64_t offset) const {
        return Bytes(offset < bytes_.size() ? bytes_.substr(offset) : std::string_view());
    }

    std::uint64_t size() const {
        return bytes_.size();
    }

  private:
    std::uint64_t byte(std::uint64_t offset) const {
        return offset < bytes_.size() ? static_cast<unsigned char>(bytes_[offset]) : 0;
    }

    std::string_view bytes_;
};

}  // namespace doctor
