// A shot from its turn to its last file.
#include <algorithm>

#include "host/brain/brain.h"
#include "host/values/iso_time.h"

namespace host::brain {

// CAPTURE is sent once or not at all; before it, the folder is looked at.
void Brain::shot_further() {
    if (!shot_ || shot_->step != ShotInHand::Step::waiting) {
        return;
    }
    if (!wanted_ || ending_) {
        return finish_shot(standing_in_the_way());
    }
    // After a stop its time may be over before pass() says so: nothing is fired then.
    if (quiet() && now_ <= shot_->give_up_turn) {
        shot_->step = ShotInHand::Step::looking;
        shot_->look = ++last_ticket_;
        ask_disk(LookAtFolder{shot_->look, folder_}, times_.disk_silence);
    }
}

void Brain::fire() {
    shot_->step = ShotInHand::Step::firing;
    shot_->fired = now_;
    shot_->from = now_;
    shot_->shot.status = ShotStatus::fired;
    shot_->shot.fired_at =
        iso_time(day_begins_.value_or(TimeOfDay{}) + std::chrono::duration_cast<TimeOfDay>(now_));
    shot_->destination = destination_.in_force;
    shot_->type = type_.in_force;
    if (shot_->type == FileType::other) {
        shot_->type.reset();
    }
    not_connected_ = false;
    say("CAPTURE");
    shot_->fence = fence();
    last_capture_ = shot_->fence;
    tell_state();
    do_now(ShotChanged{shot_->shot});
}

void Brain::hear_captured(std::string_view text) {
    if (text == "OK" && shot_ && shot_->step == ShotInHand::Step::firing) {
        shot_->captured = true;
        shot_->from = std::max(shot_->from, at_);
    }
}

// The fence behind CAPTURE is answered: the shutter sequence was sent, or it was not.
void Brain::fired() {
    shot_->step = ShotInHand::Step::waiting_for_files;
    if (!shot_->captured) {
        finish_shot(Problem{Code::camera_lost,
                            not_connected_ ? "The camera went away before the shot."
                                           : "The worker did not fire the shot.",
                            {},
                            {}});
        if (state_ == State::ready) {
            probe();
        }
        return;
    }
    if (shot_->destination == SaveDestination::card || has_all_files()) {
        finish_shot({});
    }
}

bool Brain::has_all_files() const {
    bool raw = false;
    bool developed = false;
    for (const Picture& picture : shot_->shot.pictures) {
        raw = raw || picture.kind == Kind::raw;
        developed = developed || picture.kind == Kind::developed;
    }
    if (files_under_way() > 0) {
        return false;
    }
    if (shot_->type == FileType::jpeg) {
        return developed;
    }
    if (shot_->type == FileType::raw) {
        return raw;
    }
    return raw && developed;
}

// Files that were reported while the shot waited for them, and are not in their places.
std::size_t Brain::files_under_way() const {
    return static_cast<std::size_t>(std::count_if(
        reports_.begin(), reports_.end(),
        [this](const auto& report) { return report.second.window == shot_->shot.number; }));
}

// When to stop waiting for the shot's next file.
Time Brain::files_deadline() const {
    if (!shot_->type && !shot_->shot.pictures.empty()) {
        return shot_->from + std::min(times_.other_half, shot_->patience);
    }
    return shot_->from + shot_->patience;
}

// However often its patience begins anew, and however late it was fired, a shot is answered in
// time.
Time Brain::shot_limit() const {
    return std::min(shot_->fired, shot_->give_up_turn) + times_.to_answer + shot_->patience;
}

// A look that was begun in time takes a moment, also for a shot that is to be fired now or never.
Time Brain::end_of_look() const {
    return shot_->give_up_turn + times_.grace;
}

Time Brain::shot_deadline() const {
    switch (shot_->step) {
        case ShotInHand::Step::waiting:
            return shot_->give_up_turn;
        case ShotInHand::Step::looking:
            return end_of_look();
        case ShotInHand::Step::firing:
            return shot_->fired + times_.to_answer;
        case ShotInHand::Step::waiting_for_files:
            break;
    }
    const Time deadline = files_under_way() > 0 ? shot_limit() + times_.grace
                                                : std::min(files_deadline(), shot_limit());
    return std::min(deadline, end_of_doubt());
}

// A file that came within the time of doubt speaks, however long the disk takes to look at it.
Time Brain::end_of_doubt() const {
    const auto unseen = [this](const auto& entry) {
        const Report& report = entry.second;
        return !report.placing && !report.doubted && report.heard < shot_->doubted_until;
    };
    if (shot_->doubted_until == never || std::any_of(reports_.begin(), reports_.end(), unseen)) {
        return never;
    }
    return shot_->doubted_until + times_.report_follows;  // for which a line may be held
}

void Brain::strike_shot() {
    if (!shot_ || now_ < shot_deadline()) {
        return;
    }
    switch (shot_->step) {
        case ShotInHand::Step::waiting:
            return finish_shot(
                Problem{Code::expired, "The shot could not be fired in time.", {}, {}});
        case ShotInHand::Step::looking:
            return finish_shot(
                Problem{Code::expired, "The folder's disk did not answer in time.", {}, {}});
        case ShotInHand::Step::firing:
            return finish_shot(Problem{Code::worker_hangs, "The worker does not answer.", {}, {}});
        case ShotInHand::Step::waiting_for_files:
            break;
    }
    if (now_ >= end_of_doubt()) {
        return believe_doubted();
    }
    if (shot_->lost_by) {
        return finish_shot(shot_->lost_by);
    }
    finish_shot(files_under_way() > 0
                    ? std::optional(Problem{Code::picture_not_placed,
                                            "The folder's disk did not take a file in time.",
                                            {},
                                            {}})
                    : std::nullopt);
}

}  // namespace host::brain
