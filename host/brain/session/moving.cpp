// Another folder: the worker is moved, its files of before are not.
#include <utility>

#include "host/brain/brain.h"
#include "host/process/fields.h"

namespace host::brain {

// The fence says that no command under the old folder is open.
void Brain::fence_before_moving() {
    Configuring& now = *configuring_;
    if (worker_ == Worker::up && prepared_) {
        if (now.fence == 0) {
            now.fence = fence();
        }
        if (!fence_.passed(now.fence)) {
            return;
        }
    } else if (worker_ != Worker::none || folder_ticket_ != 0) {
        return;
    }
    now.step = Configuring::Step::opening_folder;
    now.ticket = open_folder(*now.wish.folder);
}

void Brain::folder_opened_to_move(const FolderOpened& answer) {
    Configuring& now = *configuring_;
    now.ticket = 0;
    now.folder = answer.folder;
    if (!fits_in_a_command(answer.folder)) {
        return move_failed(path_too_long());
    }
    now.step = Configuring::Step::folder_opened;
    open_run_to_move();
}

// A worker that took the place of another meanwhile is waited for.
void Brain::open_run_to_move() {
    Configuring& now = *configuring_;
    // One that was gone is another one now, although its path is the same.
    const bool in_force = folder_open_ && now.folder == folder_ &&
                          !problems_.stands(Code::folder_not_taken) &&
                          !problems_.stands(Code::folder_gone);
    if (worker_ == Worker::none || in_force) {
        return adopt_folder();
    }
    if (worker_ == Worker::up && prepared_) {
        now.step = Configuring::Step::opening_run;
        now.ticket = ++last_ticket_;
        ask_disk(OpenRun{now.ticket, now.folder, run_.name}, times_.disk_silence);
    }
}

void Brain::run_opened_to_move(const RunOpened& answer) {
    Configuring& now = *configuring_;
    now.ticket = 0;
    now.run = answer;
    now.step = Configuring::Step::moving;
    say("SET_DOWNLOAD_DIR|" + escape_field(answer.staging));
    now.fence = fence();
}

void Brain::folder_refused(std::optional<std::uint32_t> code) {
    if (configuring_ && configuring_->step == Configuring::Step::moving) {
        configuring_->refusal =
            Problem{Code::folder_not_taken, "The camera SDK does not take the folder.", code, {}};
    } else {
        raise({Code::folder_not_taken, "The camera SDK does not take the folder.", code, {}});
    }
}

void Brain::moved() {
    Configuring& now = *configuring_;
    if (!fence_.passed(now.fence)) {
        return;
    }
    if (!now.echoed || now.refusal) {
        return move_failed(now.refusal.value_or(
            Problem{Code::folder_not_taken, "The worker does not take the folder.", {}, {}}));
    }
    old_runs_.push_back(run_);
    run_ = {now.run.run, now.folder, now.run.staging};
    adopt_folder();
    if (old_runs_.size() > limit::old_runs) {
        left_runs_.push_back(std::move(old_runs_.front()));
        old_runs_.erase(old_runs_.begin());
        sweep_left_runs();
    }
}

// With the staging folder below it; a longer line would arrive as several.
bool Brain::fits_in_a_command(const std::string& folder) {
    return escape_field(folder).size() + limit::staging < limit::command;
}

Problem Brain::path_too_long() {
    return {Code::folder_not_taken, "The folder's path is too long.", {}, {}};
}

void Brain::adopt_folder() {
    const std::string before = std::exchange(folder_, configuring_->folder);
    const bool was_open = std::exchange(folder_open_, true);
    clear_folder_problems();
    dirty_ = true;
    if (was_open) {
        close_folder_unless_used(before);
    }
    configuring_->step = Configuring::Step::settings;
    settle_wishes();
    // Where workers are lost so often that one a minute is tried, another folder hastens none.
    const bool wanted = (wanted_ || !starts_.empty()) && !restarts_.too_many();
    if ((state_ == State::down && wanted) ||
        (state_ == State::starting && worker_ == Worker::none && folder_ticket_ == 0)) {
        begin();
    }
}

void Brain::move_failed(const Problem& problem) {
    Configuring& now = *configuring_;
    now.stood_before = problems_.standing(problem.code);
    raise(problem);
    now.failure = problem;
    if (std::exchange(now.step, Configuring::Step::settings) == Configuring::Step::moving) {
        say("SET_DOWNLOAD_DIR|" + escape_field(run_.staging));
    }
    if (!now.run.run.empty()) {
        sweep(std::exchange(now.run, {}).run, true);
    }
    if (!now.folder.empty()) {
        close_folder_unless_used(std::exchange(now.folder, {}));
    }
    now.ticket = 0;
    settle_wishes();
}

// The next one begins in the new folder, if that is open already.
void Brain::worker_lost_while_configuring() {
    Configuring& now = *configuring_;
    now.fence = 0;
    if (now.step == Configuring::Step::moving || now.step == Configuring::Step::opening_run) {
        if (!now.run.run.empty()) {
            sweep(now.run.run, true);
        }
        now.ticket = 0;
        adopt_folder();
    }
}

// The worker may bring files to the new folder until it has ended.
void Brain::end_while_configuring() {
    const Configuring now = *std::exchange(configuring_, std::nullopt);
    if (now.step == Configuring::Step::moving) {
        old_runs_.push_back({now.run.run, now.folder, now.run.staging});
    } else if (now.step == Configuring::Step::folder_opened ||
               now.step == Configuring::Step::opening_run) {
        close_folder_unless_used(now.folder);
    }
    reply(now.request, Problem{Code::cancelled, "The session is being ended.", {}, {}});
}

}  // namespace host::brain
