// How the brain is called, and how time goes on.
#include "host/brain/brain.h"

#include <algorithm>
#include <utility>

namespace host::brain {
namespace {

constexpr Times usual_times;

}  // namespace

Brain::Brain(Wishes wishes) : Brain(std::move(wishes), usual_times) {}

Brain::Brain(Wishes wishes, const Times& times)
    : times_(times),
      destination_{wishes.save_destination, {}},
      type_{wishes.file_type, {}},
      held_(times.report_follows),
      restarts_(times),
      folder_(std::move(wishes.folder)),
      name_(std::move(wishes.name)),
      patience_(wishes.patience),
      expires_(wishes.expires) {}

void Brain::hear(std::string_view line, Time at) {
    advance(at);
    held_.hear(line, at);
    believe_lines();
    go_on();
}

void Brain::tell(const News& news, Time at) {
    advance(at);
    std::visit([this](const auto& one) { on(one); }, news);
    go_on();
}

void Brain::tell(const FileAnswer& answer, Time at) {
    advance(at);
    disk_answered();
    std::visit([this](const auto& one) { on(one); }, answer);
    go_on();
}

void Brain::ask(RequestId request, const Request& what, Time at) {
    advance(at);
    std::visit([this, request](const auto& one) { on_request(request, one); }, what);
    go_on();
}

void Brain::pass(Time now) {
    advance(now);
    believe_lines();
    if (!stands_still()) {
        strike();
    }
    go_on();
}

std::vector<Effect> Brain::take() {
    return std::exchange(effects_, {});
}

void Brain::advance(Time at) {
    if (worker_ != Worker::none && at - now_ > times_.stop) {
        now_ = at;
        excuse_the_stop();
    }
    now_ = std::max(now_, at);
}

// What was sent meanwhile stands in the pipe, and the worker may have stood still too: it answers
// first, then deadlines strike. An answer that is due does not wait for it longer than it may.
void Brain::excuse_the_stop() {
    fence_.excuse(now_);
    excuse_ending();
    if (worker_ == Worker::up) {
        after_stop_ = fence();
        still_until_ = now_ + times_.grace;
    }
}

bool Brain::stands_still() const {
    const bool read = held_.wake_at() == never && reports_.empty();
    return now_ < still_until_ && !(fence_.passed(after_stop_) && read);
}

void Brain::believe_lines() {
    while (std::optional<HeldLine> line = held_.next(now_)) {
        obey(*line);
    }
}

void Brain::strike() {
    still_until_ = Time::min();
    if (fence_.outstanding() && now_ >= fence_.silent_since() + times_.to_answer) {
        give_up_worker({Code::worker_hangs,
                        "The worker has not answered for 15 s. It is replaced by a new one.",
                        {},
                        {}});
    }
    if (now_ >= deadline_) {
        deadline_ = never;
        strike_state();
    }
    strike_shot();
    strike_requests();
    strike_ending();
    strike_disk();
    fence_when_idle();
}

void Brain::strike_state() {
    switch (state_) {
        case State::down:
            return begin();
        case State::starting:
            return give_up_start();
        case State::opening:
            return fail_session({Code::camera_no_answer, "The camera does not answer.", {}, {}});
        case State::settling:
            return ask_again();
        case State::lost:
            return close();
        case State::idle:
        case State::ready:
        case State::closing:
        case State::ending:
            return;
    }
}

void Brain::give_up_start() {
    if (worker_ == Worker::none) {
        return begin();  // a change of the folder was waited for
    }
    if (worker_ == Worker::leaving) {
        abandon_worker();
        return replace_worker();
    }
    give_up_worker(
        why_not_starting_.value_or(Problem{Code::worker_not_starting,
                                           "The worker was started and did not get ready in time.",
                                           {},
                                           {}}));
}

void Brain::fence_when_idle() {
    if (prepared_ && worker_ == Worker::up && !fence_.outstanding() &&
        now_ >= fence_.last() + times_.between_fences) {
        fence();
    }
}

void Brain::go_on() {
    if (state_ == State::idle && wanted_ && prepared_ && deadline_ == never) {
        open();
    }
    if (configuring_) {
        configure_further();
    }
    if (shot_) {
        shot_further();
    }
    take_turn();
    let_camera_go();
    if (ending_) {
        end_further();
    }
    tell_state();
}

Time Brain::wake_at() const {
    if (stands_still()) {
        return std::min(still_until_, held_.wake_at());
    }
    Time wake = std::min({deadline_, held_.wake_at(), disk_deadline_});
    const auto at = [&wake](Time time) {
        wake = std::min(wake, time);
    };
    if (worker_ != Worker::none) {
        at(now_ + times_.heartbeat);
    }
    if (fence_.outstanding()) {
        at(fence_.silent_since() + times_.to_answer);
    } else if (prepared_) {
        at(fence_.last() + times_.between_fences);
    }
    if (!disconnects_.empty() && !let_go_now_) {
        at(let_go_by_);
    }
    for (const auto* waiting : {&starts_, &connects_, &disconnects_}) {
        for (const Waiting& request : *waiting) {
            at(request.deadline);
        }
    }
    if (configuring_) {
        at(configuring_->deadline);
    }
    if (ending_) {
        at(worker_ == Worker::leaving ? ending_->stuck_at : ending_->files_until);
        for (const Waiting& request : ending_->requests) {
            at(request.deadline);
        }
    }
    if (shot_) {
        at(shot_deadline());
    }
    return wake;
}

void Brain::say(std::string line) {
    do_now(Say{std::move(line)});
}

Fence::Number Brain::fence() {
    say("PRIME");
    return fence_.sent(now_);
}

}  // namespace host::brain
