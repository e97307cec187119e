// Captures and changes of the settings, one after the other in the order in which they were asked.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

void Brain::take_turn() {
    while (!shot_ && !configuring_ && !queue_.empty()) {
        Task task = std::move(queue_.front());
        queue_.pop_front();
        if (auto* hand = std::get_if<ShotInHand>(&task)) {
            shot_ = std::move(*hand);
            shot_->give_up_turn = now_ + shot_->expires;
            shot_further();
        } else {
            configuring_ = std::get<Configuring>(std::move(task));
            configuring_->deadline = now_ + times_.configure_request;
            configure_further();
        }
    }
}

std::size_t Brain::unfired() const {
    const auto queued = std::count_if(queue_.begin(), queue_.end(), [](const Task& task) {
        return std::holds_alternative<ShotInHand>(task);
    });
    return static_cast<std::size_t>(queued) +
           (shot_ && shot_->step < ShotInHand::Step::firing ? 1 : 0);
}

// Nothing is open between the worker and us: what is said now is done now.
bool Brain::quiet() const {
    return state_ == State::ready && worker_ == Worker::up && probe_.fence == 0 &&
           fence_.passed(after_stop_) && fence_.passed(last_capture_) && disconnects_.empty();
}

}  // namespace host::brain
