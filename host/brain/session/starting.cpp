// A worker from its staging folder to its first commands.
#include "host/brain/brain.h"
#include "host/process/fields.h"

namespace host::brain {

void Brain::begin() {
    if (state_ != State::starting) {
        enter(State::starting);
    }
    deadline_ = never;
    // The next worker begins in the folder that is being opened.
    if (configuring_ && configuring_->step == Configuring::Step::opening_folder) {
        deadline_ = now_ + times_.between_asks;
        return;
    }
    if (folder_open_) {
        open_run();
    } else {
        folder_ticket_ = open_folder(folder_);
    }
}

void Brain::open_run() {
    worker_ = Worker::making_run;
    run_ticket_ = ++last_ticket_;
    ask_disk(OpenRun{run_ticket_, folder_, {}}, times_.disk_silence);
}

void Brain::on(const RunOpened& answer) {
    if (configuring_ && configuring_->ticket == answer.ticket) {
        return run_opened_to_move(answer);
    }
    if (worker_ != Worker::making_run || answer.ticket != run_ticket_) {
        return sweep(answer.run, true);
    }
    started_for_ = answer.run;
    run_ = {answer.run, folder_, answer.staging};
    worker_ = Worker::launching;
    banner_.clear();
    why_not_starting_.reset();
    process_ = 0;
    held_.forget();
    deadline_ = now_ + times_.to_be_ready;
    do_now(StartWorker{answer.run, answer.staging, answer.lock_descriptor});
}

void Brain::on(const RunNotOpened& answer) {
    if (configuring_ && configuring_->ticket == answer.ticket) {
        return move_failed(answer.problem);
    }
    if (worker_ == Worker::making_run && answer.ticket == run_ticket_) {
        worker_ = Worker::none;
        go_down(answer.problem, now_ + times_.between_tries);
    }
}

void Brain::on(const WorkerStarted& news) {
    if (news.run != started_for_ || process_ != 0) {
        return;
    }
    process_ = news.process;
    do_now(FileWork(RunBegun{news.run, news.process}));
    if (worker_ != Worker::launching) {
        return;
    }
    worker_ = Worker::silent;
    deadline_ = now_ + times_.to_be_ready;
    if (replaces_) {
        replaces_ = false;
        ++restarts_told_;
        dirty_ = true;
    }
}

void Brain::on(const WorkerNotStarted& news) {
    if (news.run != started_for_ || worker_ == Worker::none) {
        return;
    }
    worker_ = Worker::none;
    leave_run();
    if (ending_) {
        return;
    }
    go_down({Code::worker_missing, news.why, {}, {}}, now_ + times_.between_tries);
}

// Whatever says READY without having said who it is is no worker.
void Brain::hear_ready(std::string_view text) {
    if (worker_ != Worker::silent || text != "OK" || banner_.empty()) {
        return;
    }
    worker_ = Worker::up;
    restarts_.ready(now_);
    for (const Code code : {Code::worker_missing, Code::worker_not_starting, Code::worker_gone,
                            Code::worker_hangs, Code::worker_floods, Code::sdk_not_initialised}) {
        clear(code);
    }
    echoed_ = false;
    say("SET_DOWNLOAD_DIR|" + escape_field(run_.staging));
    say("SET_SAVE_DEST|" + std::string(word(*destination_.asked)));
    prepare_ = fence();
    enter(State::idle);
    reply_all(starts_, state());
}

void Brain::hear_download_dir(std::string_view text) {
    const std::string folder = unescape_field(text);
    if (configuring_ && configuring_->step == Configuring::Step::moving) {
        configuring_->echoed = configuring_->echoed || folder == configuring_->run.staging;
    } else {
        echoed_ = echoed_ || folder == run_.staging;
    }
}

void Brain::prepared() {
    if (!echoed_) {
        return give_up_worker({Code::worker_not_starting,
                               "The worker does not take a folder: it is not one, or another "
                               "version.",
                               {},
                               {}});
    }
    prepared_ = true;
}

}  // namespace host::brain
