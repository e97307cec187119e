#include "host/brain/session/fence.h"

#include <algorithm>

namespace host::brain {

Fence::Number Fence::sent(Time now) {
    waiting_.push_back(now);
    last_ = now;
    return ++sent_;
}

bool Fence::heard(Time now) {
    if (waiting_.empty()) {
        return false;
    }
    waiting_.pop_front();
    ++answered_;
    last_ = now;
    from_ = now;
    return true;
}

// The time before the last answer was spent on what stood before it.
Time Fence::silent_since() const {
    return std::max(waiting_.front(), from_);
}

void Fence::excuse(Time now) {
    from_ = now;
}

void Fence::forget(Time now) {
    waiting_.clear();
    answered_ = sent_;
    last_ = now;
}

}  // namespace host::brain
