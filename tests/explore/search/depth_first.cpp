#include "tests/explore/search/depth_first.h"

#include "tests/explore/scheduler.h"

namespace explore {

bool DepthFirst::next_run() {
    depth_ = 0;
    if (!begun_) {
        begun_ = true;
        return true;
    }
    while (!path_.empty() && path_.back().untried == 0) {
        path_.pop_back();
    }
    if (path_.empty()) {
        return false;
    }
    Node& node = path_.back();
    node.choice = __builtin_ctz(node.untried);
    node.untried &= node.untried - 1;
    node.cost = node.choice == jump_ahead || (!node.free && node.choice != node.usual) ? 1 : 0;
    return true;
}

int DepthFirst::choose(std::uint32_t, const Options& options) {
    if (depth_ < path_.size()) {
        return path_[depth_++].choice;
    }
    const int spent = path_.empty() ? 0 : path_.back().spent + path_.back().cost;
    constexpr int never_reached = 1000;
    int& least_spent = known_.number_for(state_key(), never_reached);
    if (least_spent <= spent) {
        return stop_here;
    }
    least_spent = spent;
    const int usual = options.usual();
    const bool free = !options.current_ready();
    Node node{0, usual, spent, 0, usual, free};
    if (free || spent < bound_) {
        node.untried = options.ready & ~(1U << usual);
    }
    if (options.jump && spent < bound_) {
        node.untried |= 1U << jump_ahead;
    }
    path_.push_back(node);
    ++depth_;
    return usual;
}

}  // namespace explore
