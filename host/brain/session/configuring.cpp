// Other settings in a running session: when no shot is out, one change after the other.
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
    const Configuring done = *std::exchange(configuring_, {});
    if (done.failure) {
        raise(*done.failure);  // the folder of before may have been opened since
    }
    reply(done.request, state());
}

void Brain::give_configuring_up() {
    if (configuring_->step != Configuring::Step::settings &&
        configuring_->step != Configuring::Step::turn) {
        move_failed({Code::folder_not_taken, "The folder could not be changed in time.", {}, {}});
    }
    const RequestId request = configuring_->request;
    configuring_.reset();
    reply(request, standing_in_the_way());
}

}  // namespace host::brain
