// Other settings in a running session: when no shot is out, one change after the other.
#include <algorithm>
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

void Brain::configure_further() {
    Configuring& now = *configuring_;
    if (now.step == Configuring::Step::turn) {
        take_wishes();
        if (now.wish.folder &&
            (*now.wish.folder != folder_ || !folder_open_ || problems_.stands(Code::folder_gone) ||
             problems_.stands(Code::folder_not_taken))) {
            now.step = Configuring::Step::fencing;
        } else {
            now.step = Configuring::Step::settings;
            settle_wishes();
        }
    }
    if (now.step == Configuring::Step::fencing) {
        fence_before_moving();
    }
    if (now.step == Configuring::Step::folder_opened) {
        open_run_to_move();
    }
    if (now.step == Configuring::Step::moving) {
        moved();
    }
    if (now.step == Configuring::Step::settings && in_force_or_known()) {
        configured();
    }
}

void Brain::take_wishes() {
    const Configure& wish = configuring_->wish;
    if (wish.name) {
        name_ = *wish.name;
    }
    if (wish.save_destination) {
        destination_.asked = wish.save_destination;
        dirty_ = true;
    }
    if (wish.file_type && *wish.file_type != FileType::other) {
        type_.asked = wish.file_type;
        dirty_ = true;
    }
}

void Brain::settle_wishes() {
    const Configure& wish = configuring_->wish;
    if (!wish.save_destination && !wish.file_type) {
        return;
    }
    if (state_ == State::ready) {
        settle(false);
    } else if (state_ == State::settling) {
        settling_.again = true;
    }
}

// Without a session everything waits for the next one, and what hinders that one is a problem.
bool Brain::in_force_or_known() const {
    switch (state_) {
        case State::ready:
            return true;
        case State::idle:
            return !wanted_ || !problems_.all().empty();
        case State::down:
            return true;
        case State::starting:
        case State::opening:
        case State::settling:
        case State::lost:
        case State::closing:
        case State::ending:
            break;
    }
    return false;
}

void Brain::configured() {
    Configuring done = *std::exchange(configuring_, {});
    if (done.failure && !problems_.stands(done.failure->code)) {
        done.stood_before.reset();  // the folder of before was opened since
        raise(*done.failure);
    }
    reply(done.request, state());
    take_failure_back(done);
}

// Who asked for another folder has been told why it was not taken; with the one in force nothing is
// wrong, or what was wrong before.
void Brain::take_failure_back(const Configuring& done) {
    const std::vector<Problem>& all = problems_.all();
    if (!done.failure || std::find(all.begin(), all.end(), *done.failure) == all.end()) {
        return;
    }
    clear(done.failure->code);
    if (done.stood_before) {
        raise(*done.stood_before);
    }
}

void Brain::give_configuring_up() {
    if (configuring_->step != Configuring::Step::settings &&
        configuring_->step != Configuring::Step::turn) {
        move_failed({Code::folder_not_taken, "The folder could not be changed in time.", {}, {}});
    }
    const Configuring given_up = *std::exchange(configuring_, {});
    reply(given_up.request, standing_in_the_way());
    take_failure_back(given_up);
}

}  // namespace host::brain
