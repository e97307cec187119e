// The end: files on their way are waited for, then the ladder; how it ended is told.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

// A second one shares the first one's end, and may make it come sooner.
void Brain::on_request(RequestId id, const Shutdown& request) {
    const Time patience = std::max(Time{}, request.patience.value_or(times_.files_at_the_end));
    const Waiting waiting{id, now_ + patience + times_.shutdown_request};
    if (shut_) {
        return reply(id, last_end_);
    }
    if (ending_) {
        if (ending_->requests.size() >= limit::requests) {
            return reply(id, Problem{Code::busy, "Too many requests are waiting.", {}, {}});
        }
        ending_->files_until = std::min(ending_->files_until, now_ + patience);
        ending_->requests.push_back(waiting);
        return;
    }
    ending_.emplace(Ending{});
    ending_->requests.push_back(waiting);
    ending_->files_until = now_ + patience;
    last_end_ = {};
    const Problem why{Code::cancelled, "The session is being ended.", {}, {}};
    refuse_queued(why);
    for (Task& task : std::exchange(queue_, {})) {
        reply(std::get<Configuring>(task).request, why);
    }
    if (configuring_) {
        end_while_configuring();
    }
    enter(State::ending);
    reply_all(starts_, why);
    reply_all(connects_, why);
    reply_all(disconnects_, state());
    probe_ = {};
    if (worker_ == Worker::making_run) {
        worker_ = Worker::none;
    }
    if (worker_ == Worker::leaving) {
        ending_->laddering = true;
        ending_->stuck_at = now_ + 3 * times_.rung_when_hung + times_.after_sigkill;
    }
}

void Brain::end_further() {
    if (worker_ != Worker::none && !ending_->laddering) {
        const bool files = shot_ || !reports_.empty();
        if (!files || ending_->files_until == never) {
            if (shot_) {
                finish_shot(Problem{Code::cancelled, "The session was ended.", {}, {}});
            }
            climb(times_.rung_in_order);
        }
        return;
    }
    if (worker_ != Worker::none) {
        return;
    }
    // The disk may be stuck, and what it has not brought in then, the next start brings in.
    if (reports_.empty() && left_runs_.empty() && sweeps_ == 0) {
        ended();
    }
}

// Who stood still past its time-out has a moment left to end the worker in order.
void Brain::excuse_ending() {
    if (!ending_) {
        return;
    }
    for (Waiting& request : ending_->requests) {
        request.deadline = std::max(request.deadline, now_ + times_.grace);
    }
}

void Brain::strike_ending() {
    if (!ending_) {
        return;
    }
    if (now_ >= ending_->files_until) {
        ending_->files_until = never;  // waited long enough
    }
    if (worker_ == Worker::leaving && now_ >= ending_->stuck_at) {
        ending_->how = {WorkerEnd::sigkill, 128 + 9};
        abandon_worker();
    }
    Time first = never;
    for (const Waiting& request : ending_->requests) {
        first = std::min(first, request.deadline);
    }
    if (now_ >= first) {
        ended();
    }
}

void Brain::ended() {
    const Ending ending = *std::exchange(ending_, {});
    if (shot_) {
        finish_shot(Problem{Code::cancelled, "The session was ended.", {}, {}});
    }
    worker_ = Worker::none;
    shut_ = true;
    last_end_ = ending.how;
    if (folder_open_) {
        do_now(FileWork(CloseFolder{folder_}));
    }
    forget_session();
    enter(State::down);
    for (const Waiting& request : ending.requests) {
        reply(request.request, ending.how);
    }
}

}  // namespace host::brain
