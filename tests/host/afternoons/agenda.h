// What will happen in an afternoon, and when. Time is a number that goes on from one thing to the
// next; what is due at the same time happens in the order in which it was written down.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "host/values/time.h"

namespace afternoons {

using host::Time;
using std::chrono::milliseconds;
using std::chrono::seconds;

class Agenda {
  public:
    void at(Time when, std::function<void()> what) {
        items_.push_back({std::max(when, now_), ++last_, std::move(what)});
        std::push_heap(items_.begin(), items_.end());
    }

    void after(Time delay, std::function<void()> what) {
        at(now_ + delay, std::move(what));
    }

    Time next() const {
        return items_.empty() ? Time::max() : items_.front().when;
    }

    // Everything that is due by then, with the clock at its own time.
    void run_until(Time end) {
        while (!items_.empty() && items_.front().when <= end) {
            std::pop_heap(items_.begin(), items_.end());
            Item item = std::move(items_.back());
            items_.pop_back();
            now_ = item.when;
            item.what();
        }
        now_ = std::max(now_, end);
    }

    Time now() const {
        return now_;
    }

  private:
    struct Item {
        Time when{};
        std::uint64_t number = 0;
        std::function<void()> what;

        bool operator<(const Item& other) const {
            return when != other.when ? when > other.when : number > other.number;
        }
    };

    std::vector<Item> items_;
    Time now_ = seconds(1000);
    std::uint64_t last_ = 0;
};

}  // namespace afternoons
