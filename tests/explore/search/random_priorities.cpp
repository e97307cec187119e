#include "tests/explore/search/random_priorities.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "tests/explore/clocks.h"

namespace explore {

namespace {

constexpr std::uint64_t most_falls = 4;

}  // namespace

// splitmix64
std::uint64_t RandomPriorities::random() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15ULL;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ z >> 27) * 0x94D049BB133111EBULL;
    return z ^ z >> 31;
}

void RandomPriorities::next_run(std::uint64_t seed, std::uint32_t turns, int jumps) {
    state_ = seed;
    for (int i = 0; i < most_fibers; ++i) {
        priorities_[i] = i + 1;
        std::swap(priorities_[i], priorities_[random() % static_cast<std::uint64_t>(i + 1)]);
    }
    lowest_ = 0;
    falls_.clear();
    for (std::uint64_t falls = random() % (most_falls + 1); falls > 0; --falls) {
        falls_.push_back(static_cast<std::uint32_t>(random() % turns));
    }
    jumps_.clear();
    for (std::uint64_t i = random() % static_cast<std::uint64_t>(jumps + 1); i > 0; --i) {
        jumps_.push_back(static_cast<std::uint32_t>(random() % turns));
    }
    std::sort(falls_.begin(), falls_.end(), std::greater<>());
    std::sort(jumps_.begin(), jumps_.end(), std::greater<>());
}

int RandomPriorities::choose(std::uint32_t turn, const Options& options) {
    while (!falls_.empty() && falls_.back() <= turn) {
        falls_.pop_back();
        priorities_[options.current] = --lowest_;
    }
    if (options.jump && !jumps_.empty() && jumps_.back() <= turn) {
        jumps_.pop_back();
        return jump_ahead;
    }
    int best = options.usual();
    for (std::uint32_t ready = options.ready; ready != 0; ready &= ready - 1) {
        const int fiber = __builtin_ctz(ready);
        best = priorities_[fiber] > priorities_[best] ? fiber : best;
    }
    return best;
}

}  // namespace explore
