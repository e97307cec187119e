// What came of a shot.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

// The shot in hand is over, with what it has; `why` is what ended it before its files were there.
void Brain::finish_shot(const std::optional<Problem>& why) {
    if (shot_->step >= ShotInHand::Step::firing) {
        reject_doubted();
        judge_shot(why);
        after_empty_shot_ = shot_->stem.empty() && shot_->destination != SaveDestination::card;
        if (after_empty_shot_) {
            late_until_ = now_ + times_.late;
        }
    } else {
        shot_->shot.status = ShotStatus::refused;
        blame(*why);
    }
    const ShotInHand hand = *std::exchange(shot_, {});
    tell_shot_over(hand);
}

// Nothing new can come for the shot in hand; what was reported before is still placed.
void Brain::give_up_shot(const Problem& why) {
    if (!shot_ || shot_->step < ShotInHand::Step::firing) {
        return;
    }
    shot_->step = ShotInHand::Step::waiting_for_files;
    shot_->lost_by = why;
    if (files_under_way() == 0) {
        finish_shot(why);
    }
}

// Something is wrong with the shot in hand. Each is told; a worker that reports files without end
// leaves the shot the first ones and the last, which says what came of it.
void Brain::blame(Problem problem) {
    problem.shot = shot_->shot.number;
    mention(problem);
    std::vector<Problem>& problems = shot_->shot.problems;
    if (problems.size() == limit::shot_problems) {
        problems.pop_back();
    }
    problems.push_back(std::move(problem));
}

void Brain::judge_shot(const std::optional<Problem>& why) {
    Shot& shot = shot_->shot;
    const bool damaged = std::any_of(shot.pictures.begin(), shot.pictures.end(),
                                     [](const Picture& picture) { return !picture.whole; });
    // What goes to the card is not seen: that the camera warns of nothing has to do.
    const bool to_card = shot_->destination == SaveDestination::card && shot_->captured;
    // What may or may not be a pair is all there when no other half comes in time.
    const bool all = (to_card && !shot_->caution) || has_all_files() ||
                     (!why && !shot_->type && !shot.pictures.empty());
    if (all) {
        shot.status = damaged ? ShotStatus::incomplete : ShotStatus::complete;
        return;
    }
    shot.status = shot.pictures.empty() ? ShotStatus::none : ShotStatus::incomplete;
    if (why) {
        blame(*why);
    } else if (shot.pictures.empty()) {
        blame({Code::no_picture,
               to_card          ? "The card may have no picture of the shot: the camera warned."
               : shot_->caution ? "The shot brought no picture in time; the camera gave a reason."
                                : "The shot brought no picture in time.",
               shot_->caution,
               {}});
    } else {
        blame({Code::half_missing,
               "Only one half of the shot came.",
               shot_->caution ? shot_->caution : pair_refusal_,
               {}});
    }
}

void Brain::tell_shot_over(const ShotInHand& hand) {
    tell_state();
    do_now(ShotChanged{hand.shot});
    reply(hand.request, hand.shot);
}

}  // namespace host::brain
