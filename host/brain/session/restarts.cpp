#include "host/brain/session/restarts.h"

namespace host::brain {

Time Restarts::lost(Time now) {
    // One that has lived this long starts a new count.
    if (ready_since_ != never && now - ready_since_ >= times_.restarts_count_for) {
        losses_.clear();
        too_many_ = false;
    }
    ready_since_ = never;
    while (!losses_.empty() && now - losses_.front() >= times_.restarts_count_for) {
        losses_.pop_front();
    }
    losses_.push_back(now);
    if (losses_.size() > times_.most_restarts) {
        too_many_ = true;
        losses_.pop_front();
    }
    return too_many_ ? now + times_.between_tries : now;
}

}  // namespace host::brain
