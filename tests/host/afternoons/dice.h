// What is drawn, from a number of its own.
#pragma once

#include <cstdint>

namespace afternoons {

// SplitMix64: a few lines, and the same everywhere, unlike the library's distributions.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15U + 1) {}

    std::uint64_t next() {
        std::uint64_t value = state_ += 0x9E3779B97F4A7C15U;
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
        return value ^ (value >> 31);
    }

    int below(int end) {
        return static_cast<int>(next() % static_cast<std::uint64_t>(end));
    }

  private:
    std::uint64_t state_;
};

}  // namespace afternoons
