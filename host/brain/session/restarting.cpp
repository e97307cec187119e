// A worker that is gone, hangs, floods or is none: ended if need be, and replaced.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {
namespace {

// What a program that gives up says is often all that there is to know of the reason.
std::string end_of(const std::string& when, const WorkerEnded& news) {
    return "The worker ended " + when + " (" +
           (news.status > 128 ? "signal " + std::to_string(news.status - 128)
                              : "status " + std::to_string(news.status)) +
           ")." + (news.last_words.empty() ? "" : " It said: \"" + news.last_words + "\".");
}

}  // namespace

// Ends it by the ladder. What it still says of files counts.
void Brain::give_up_worker(const Problem& problem) {
    if (worker_ == Worker::none || worker_ == Worker::making_run || worker_ == Worker::leaving) {
        return;
    }
    raise(problem);
    last_loss_ = problem;
    climb(times_.rung_when_hung);
    lose_session(problem);
    if (!ending_) {
        enter(State::starting);
        deadline_ = now_ + 3 * times_.rung_when_hung + times_.after_sigkill;
    }
}

void Brain::climb(Time rung) {
    worker_ = Worker::leaving;
    fence_.forget(now_);
    prepared_ = false;
    do_now(EndWorker{started_for_, rung});
    if (ending_) {
        ending_->laddering = true;
        ending_->stuck_at = now_ + 3 * rung + times_.after_sigkill;
    }
}

// Whatever was under way with the camera comes to nothing.
void Brain::lose_session(const Problem& problem) {
    fence_.forget(now_);
    prepared_ = false;
    give_up_shot(problem);
    if (configuring_) {
        worker_lost_while_configuring();
    }
    forget_session();
    dirty_ = true;
}

void Brain::on(const WorkerEnded& news) {
    if (news.run != started_for_ || worker_ == Worker::none || worker_ == Worker::making_run) {
        return abandoned_ended(news.run);
    }
    held_.no_more();
    believe_lines();
    if (ending_) {
        ending_->how = {news.by, news.status};
    }
    if (worker_ != Worker::leaving) {
        last_loss_ =
            worker_ == Worker::up
                ? Problem{Code::worker_gone, end_of("by itself", news), {}, {}}
                : why_not_starting_.value_or(Problem{
                      Code::worker_not_starting, end_of("before it was ready", news), {}, {}});
        raise(last_loss_);
        lose_session(last_loss_);
    }
    replace_worker();
}

void Brain::replace_worker() {
    worker_ = Worker::none;
    leave_run();
    if (ending_) {
        return;
    }
    replaces_ = true;
    const Time when = restarts_.lost(now_);
    if (when <= now_) {
        return begin();
    }
    Problem why = last_loss_;
    why.text += " It happened too often: from now on it is tried once a minute.";
    go_down(why, when);
}

// It has been killed and does not end. Its staging folder stays its own until it does.
void Brain::abandon_worker() {
    const std::string which =
        process_ == 0 ? " that was being started" : ", process " + std::to_string(process_) + ",";
    raise({Code::worker_hangs,
           "A worker" + which + " cannot be ended: it is stuck in the system.",
           {},
           {}});
    worker_ = Worker::none;
    std::vector<Run> runs = std::exchange(old_runs_, {});
    runs.push_back(std::exchange(run_, {}));
    abandoned_.emplace_back(std::exchange(started_for_, {}), std::move(runs));
    if (abandoned_.size() > limit::old_runs) {
        abandoned_.pop_front();  // the next start brings in what it leaves
    }
}

// What it brought meanwhile belongs to nobody's shot.
void Brain::abandoned_ended(const std::string& started_for) {
    const auto found = std::find_if(abandoned_.begin(), abandoned_.end(),
                                    [&](const auto& one) { return one.first == started_for; });
    if (found == abandoned_.end() || shut_) {
        return;
    }
    left_runs_.insert(left_runs_.end(), found->second.begin(), found->second.end());
    abandoned_.erase(found);
    sweep_left_runs();
}

// What the worker has left is brought in once its reports are dealt with.
void Brain::leave_run() {
    if (!run_.name.empty()) {
        left_runs_.push_back(std::exchange(run_, {}));
    }
    left_runs_.insert(left_runs_.end(), old_runs_.begin(), old_runs_.end());
    old_runs_.clear();
    sweep_left_runs();
}

void Brain::sweep_left_runs() {
    for (auto run = left_runs_.begin(); run != left_runs_.end();) {
        const bool reported =
            std::any_of(reports_.begin(), reports_.end(),
                        [&](const auto& report) { return report.second.run == run->name; });
        if (reported) {
            ++run;
            continue;
        }
        const Run left = *run;
        run = left_runs_.erase(run);
        sweep(left.name, true);
        close_folder_unless_used(left.folder);
    }
}

void Brain::close_folder_unless_used(const std::string& folder) {
    const auto in = [&](const Run& run) {
        return run.folder == folder;
    };
    const auto among = [&](const std::vector<Run>& runs) {
        return std::any_of(runs.begin(), runs.end(), in);
    };
    const bool abandoned = std::any_of(abandoned_.begin(), abandoned_.end(),
                                       [&](const auto& worker) { return among(worker.second); });
    const bool next = configuring_ && (folder == configuring_->folder ||
                                       (configuring_->step == Configuring::Step::opening_folder &&
                                        folder == configuring_->wish.folder));
    if (folder != folder_ && !next && !in(run_) && !among(old_runs_) && !among(left_runs_) &&
        !abandoned) {
        do_now(FileWork(CloseFolder{folder}));
    }
}

void Brain::go_down(const Problem& problem, Time until) {
    raise(problem);
    enter(State::down);
    deadline_ = until;
    reply_all(starts_, problem);
}

void Brain::on(const WorkerFlooded& news) {
    if (news.run == started_for_) {
        give_up_worker({Code::worker_floods, "The worker wrote " + news.what + ".", {}, {}});
    }
}

void Brain::on(const LineTooLong& news) {
    if (news.run == started_for_) {
        mention({Code::worker_floods, "The worker wrote a line over 64 KiB.", {}, {}});
    }
}

void Brain::on(const WorkerInputFull& news) {
    if (news.run == started_for_) {
        give_up_worker({Code::worker_hangs, "The worker no longer takes commands.", {}, {}});
    }
}

void Brain::on(const CameraIsSimulated&) {
    dirty_ = dirty_ || !simulated_;
    simulated_ = true;
}

// The brain's clock stands still while the machine sleeps; the time of day goes on.
void Brain::on(const TimeOfDayIs& news) {
    const auto begins = news.now - std::chrono::duration_cast<TimeOfDay>(now_);
    if (day_begins_ && begins - *day_begins_ > times_.stop) {
        excuse_the_stop();
    }
    day_begins_ = begins;
}

}  // namespace host::brain
