// What hosts ask for. Each request is answered exactly once.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {
namespace {

Problem too_many() {
    return {Code::busy, "Too many requests are waiting.", {}, {}};
}

}  // namespace

void Brain::reply(RequestId id, Answer answer) {
    tell_state();
    do_now(Reply{id, std::move(answer)});
}

void Brain::reply_all(std::vector<Waiting>& waiting, const Answer& answer) {
    for (const Waiting& request : std::exchange(waiting, {})) {
        reply(request.request, answer);
    }
}

void Brain::on_request(RequestId id, const Start&) {
    if (shut_ || ending_) {
        return reply(id, standing_in_the_way());
    }
    if (worker_ == Worker::up) {
        return reply(id, state());
    }
    if (starts_.size() >= limit::requests) {
        return reply(id, too_many());
    }
    starts_.push_back({id, now_ + times_.start_request});
    if (state_ == State::down) {
        begin();
    }
}

// A try at once, however long the next one was to be waited for.
void Brain::on_request(RequestId id, const Connect&) {
    if (shut_ || ending_) {
        return reply(id, standing_in_the_way());
    }
    if (connects_.size() >= limit::requests) {
        return reply(id, too_many());
    }
    wanted_ = true;
    if (state_ == State::ready && disconnects_.empty()) {
        return reply(id, state());
    }
    connects_.push_back({id, now_ + times_.connect_request});
    failures_ = 0;
    if (state_ == State::down) {
        begin();
    } else if (state_ == State::idle) {
        deadline_ = never;
    }
}

// A shot that is under way is waited for, though not for long.
void Brain::on_request(RequestId id, const Disconnect&) {
    if (shut_ || ending_) {
        return reply(id, state());
    }
    if (disconnects_.size() >= limit::requests) {
        return reply(id, too_many());
    }
    wanted_ = false;
    reply_all(connects_, Problem{Code::cancelled, "Disconnected meanwhile.", {}, {}});
    refuse_queued({Code::not_connected, "Disconnected meanwhile.", {}, {}});
    if (disconnects_.empty()) {
        let_go_now_ = false;
        let_go_by_ = now_ + times_.shot_at_disconnect;
    }
    disconnects_.push_back({id, now_ + times_.disconnect_request});
}

void Brain::let_camera_go() {
    if (disconnects_.empty() || ending_) {
        return;
    }
    const bool session = state_ == State::opening || state_ == State::settling ||
                         state_ == State::ready || state_ == State::lost;
    if (!session) {
        clear_session_problems();
        if (state_ == State::closing) {
            return;
        }
        if (state_ == State::idle) {
            deadline_ = never;
        }
        return reply_all(disconnects_, state());
    }
    // One that was asked for behind this waits for the next session.
    const bool shot_is_out = shot_ && shot_->step >= ShotInHand::Step::firing;
    if (shot_is_out && !let_go_now_) {
        return;
    }
    if (shot_is_out) {
        finish_shot(Problem{Code::cancelled, "Disconnected meanwhile.", {}, {}});
    }
    clear_session_problems();
    close();
}

void Brain::on_request(RequestId id, const Capture& request) {
    if (!was_ready_) {
        return reply(
            id, shut_ || ending_
                    ? standing_in_the_way()
                    : Problem{Code::not_connected, "No camera has been connected yet.", {}, {}});
    }
    ShotInHand hand;
    hand.request = id;
    hand.shot.number = ++last_shot_;
    hand.shot.tag = request.tag;
    hand.name = request.name.value_or(name_);
    hand.patience = std::clamp<Time>(request.patience.value_or(patience_),
                                     std::chrono::milliseconds(100), std::chrono::hours(1));
    hand.expires =
        std::clamp<Time>(request.expires.value_or(expires_), Time{}, std::chrono::hours(1));
    if (unfired() >= limit::captures) {
        return refuse(hand, {Code::busy, "Eight captures are waiting already.", {}, {}});
    }
    if (!wanted_ || shut_ || ending_) {
        return refuse(hand, standing_in_the_way());
    }
    queue_.push_back(std::move(hand));
}

// Refused without ever having been the shot in hand.
void Brain::refuse(ShotInHand& hand, Problem why) {
    hand.shot.status = ShotStatus::refused;
    why.shot = hand.shot.number;
    mention(why);
    hand.shot.problems.push_back(std::move(why));
    tell_shot_over(hand);
}

void Brain::refuse_queued(const Problem& why) {
    std::deque<Task> rest;
    std::vector<ShotInHand> refused;
    for (Task& task : queue_) {
        if (auto* hand = std::get_if<ShotInHand>(&task)) {
            refused.push_back(std::move(*hand));
        } else {
            rest.push_back(std::move(task));
        }
    }
    queue_ = std::move(rest);
    if (shot_ && shot_->step < ShotInHand::Step::firing) {
        finish_shot(why);
    }
    for (ShotInHand& hand : refused) {
        refuse(hand, why);
    }
}

void Brain::on_request(RequestId id, const Cancel& request) {
    const Problem why{Code::cancelled, "Cancelled.", {}, {}};
    std::deque<Task> queue = std::exchange(queue_, {});
    if (shot_ && shot_->shot.tag == request.tag) {
        finish_shot(why);
    }
    for (Task& task : queue) {
        auto* hand = std::get_if<ShotInHand>(&task);
        if (hand != nullptr && hand->shot.tag == request.tag) {
            refuse(*hand, why);
        } else {
            queue_.push_back(std::move(task));
        }
    }
    reply(id, Done{});
}

void Brain::on_request(RequestId id, const Configure& request) {
    if (shut_ || ending_) {
        return reply(id, standing_in_the_way());
    }
    const auto waiting = std::count_if(queue_.begin(), queue_.end(), [](const Task& task) {
        return std::holds_alternative<Configuring>(task);
    });
    if (static_cast<std::size_t>(waiting) >= limit::requests) {
        return reply(id, too_many());
    }
    Configuring configuring;
    configuring.request = id;
    configuring.wish = request;
    queue_.push_back(std::move(configuring));
}

void Brain::strike_requests() {
    const auto strike = [this](std::vector<Waiting>& waiting) {
        while (!waiting.empty() && now_ >= waiting.front().deadline) {
            const RequestId id = waiting.front().request;
            waiting.erase(waiting.begin());
            reply(id, standing_in_the_way());
        }
    };
    strike(starts_);
    strike(connects_);
    strike(disconnects_);
    let_go_now_ = let_go_now_ || now_ >= let_go_by_;
    if (configuring_ && now_ >= configuring_->deadline) {
        give_configuring_up();
    }
}

}  // namespace host::brain
