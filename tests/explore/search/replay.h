#pragma once

#include <cstddef>

#include "tests/explore/choices.h"

namespace explore {

// A recorded schedule, once more.
class Replay final : public Choices {
  public:
    explicit Replay(const Schedule& schedule) : schedule_(schedule) {}

  protected:
    int choose(std::uint32_t turn, const Options& options) override {
        while (next_ < schedule_.size() && schedule_[next_].turn < turn) {
            ++next_;
        }
        if (next_ == schedule_.size() || schedule_[next_].turn != turn) {
            return options.usual();
        }
        const int choice = schedule_[next_++].choice;
        const bool possible =
            choice == jump_ahead ? options.jump : (options.ready >> choice & 1) != 0;
        return possible ? choice : options.usual();
    }

  private:
    const Schedule& schedule_;
    std::size_t next_ = 0;
};

}  // namespace explore
