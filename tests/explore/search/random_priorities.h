#pragma once

#include <cstdint>
#include <vector>

#include "tests/explore/choices.h"

namespace explore {

// Random priorities (PCT): the ready fiber of the highest priority runs, and at a few random turns
// whoever runs falls to the lowest: no to four times, as the seed says. A mistake that
// needs d <= 5 threads at the wrong places is found by one run with a probability of at least
// 1 / (5 * fibers * turns^(d-1)), far more often than by tossing a coin at each turn.
class RandomPriorities final : public Choices {
  public:
    // Before each run. The seed alone decides it; `turns` is how long a run is taken to be.
    void next_run(std::uint64_t seed, std::uint32_t turns, int jumps);

  protected:
    int choose(std::uint32_t turn, const Options& options) override;

  private:
    std::uint64_t random();

    std::uint64_t state_ = 0;
    int priorities_[32] = {};
    int lowest_ = 0;
    std::vector<std::uint32_t> falls_;  // turns, the last one first
    std::vector<std::uint32_t> jumps_;
};

}  // namespace explore
