// The folder that pictures go to.
#include "host/brain/brain.h"

namespace host::brain {

Ticket Brain::open_folder(const std::string& folder) {
    const Ticket ticket = ++last_ticket_;
    return ask_disk(OpenFolder{ticket, folder}, times_.disk_lock + times_.disk_sweep);
}

void Brain::on(const FolderOpened& answer) {
    last_shot_ = std::max(last_shot_, answer.last_shot);
    show(answer.pictures);
    for (const Problem& problem : answer.problems) {
        mention(problem);
    }
    if (answer.room) {
        look_at_room(*answer.room);
    }
    if (configuring_ && configuring_->ticket == answer.ticket) {
        return folder_opened_to_move(answer);
    }
    if (shut_) {
        return do_now(FileWork(CloseFolder{answer.folder}));
    }
    if (answer.ticket != folder_ticket_) {
        return close_folder_unless_used(answer.folder);
    }
    folder_ticket_ = 0;
    folder_waited_for_.reset();
    if (!fits_in_a_command(answer.folder)) {
        do_now(FileWork(CloseFolder{answer.folder}));
        return go_down(path_too_long(), now_ + times_.between_tries);
    }
    folder_ = answer.folder;
    folder_open_ = true;
    clear_folder_problems();
    dirty_ = true;
    if (state_ == State::starting && worker_ == Worker::none) {
        open_run();
    }
}

void Brain::on(const FolderWaitedFor& news) {
    if (news.ticket == folder_ticket_) {
        folder_waited_for_ = news.problem;
        dirty_ = true;
    }
}

void Brain::on(const FolderNotOpened& answer) {
    if (configuring_ && configuring_->ticket == answer.ticket) {
        return move_failed(answer.problem);
    }
    if (answer.ticket == folder_ticket_) {
        folder_ticket_ = 0;
        folder_waited_for_.reset();
        if (state_ == State::starting) {
            go_down(answer.problem, now_ + times_.between_tries);
        }
    }
}

// Before a shot: a folder that was moved, deleted or ejected gets nothing in its stead.
void Brain::on(const FolderLooked& answer) {
    if (answer.there && answer.same && answer.writable) {
        clear(Code::folder_gone);
        clear(Code::folder_not_permitted);
        look_at_room(answer.room);
    } else if (answer.there && answer.same) {
        raise({Code::folder_not_permitted, "The folder cannot be written to.", {}, {}});
    } else {
        raise({Code::folder_gone, "The folder was moved, deleted or ejected.", {}, {}});
    }
    if (!shot_ || shot_->step != ShotInHand::Step::looking || shot_->look != answer.ticket) {
        return;
    }
    for (const Problem& problem : problems_.all()) {
        if (problem.code == Code::folder_gone || problem.code == Code::folder_not_permitted) {
            return finish_shot(Problem(problem));
        }
    }
    shot_->step = ShotInHand::Step::waiting;
    if (quiet() && now_ <= end_of_look()) {
        fire();
    }
}

void Brain::clear_folder_problems() {
    for (const Code code : {Code::folder_not_taken, Code::folder_gone, Code::folder_not_permitted,
                            Code::folder_in_use}) {
        clear(code);
    }
}

}  // namespace host::brain
