#pragma once

#include <cstdint>
#include <vector>

#include "tests/explore/choices.h"
#include "tests/explore/search/key_table.h"

namespace explore {

// Every schedule with at most `bound` pre-emptions: threads made to wait although they could have
// gone on, and early moves of the clock. Choosing among threads when the running one cannot go on
// is free. Two schedules that differ only in the order of steps that do not depend on each other
// lead to the same state; the second one is not followed any further.
class DepthFirst final : public Choices {
  public:
    explicit DepthFirst(int bound) : bound_(bound) {}

    // Before each run. False: there is nothing left to try.
    bool next_run();

    std::uint64_t states() const {
        return known_.size();
    }

  protected:
    int choose(std::uint32_t turn, const Options& options) override;

  private:
    struct Node {
        std::uint32_t untried;  // choices, by bit
        int choice;
        int spent;  // pre-emptions before this node
        int cost;   // of this choice
        int usual;
        bool free;  // whoever ran could not go on
    };

    int bound_;
    bool begun_ = false;
    std::vector<Node> path_;
    std::size_t depth_ = 0;
    // State, to the pre-emptions that were spent when it was reached at the least.
    KeyTable known_;
};

}  // namespace explore
