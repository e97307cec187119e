// A loss is asked about before it is believed: a file's name can look like one.
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

// There may be two of these lines for one loss.
void Brain::hear_disconnected(std::string_view text) {
    if (!text.empty()) {
        return;
    }
    if (state_ == State::ready) {
        probe();
    } else if (state_ == State::settling) {
        settling_.again = true;
    } else if (state_ == State::opening) {
        opening_.connected = false;
        opening_.failure =
            Problem{Code::camera_lost, "The camera went away while it was opened.", {}, {}};
        judge_opening();
    }
}

void Brain::probe() {
    if (probe_.fence != 0) {
        probe_.again = true;
        return;
    }
    answered_ = false;
    say("SET_SAVE_DEST|" + std::string(word(*destination_.asked)));
    probe_.fence = fence();
}

void Brain::probed() {
    const Probe asked = std::exchange(probe_, {});
    const bool came_back = asked.connected || asked.came_back;
    if (asked.again || (asked.connected && !answered_)) {
        probe();
        probe_.came_back = came_back;
    } else if (!answered_) {
        lose();
    } else if (came_back) {
        settle(false);
    } else {
        loss_in_doubt_ = true;
    }
}

// A session that ends takes the files with it that were not sent.
void Brain::lose() {
    const Problem lost{Code::camera_lost, "The camera went away.", {}, {}};
    raise_camera_problem(lost);
    give_up_shot(lost);
    clear(Code::folder_not_taken);
    probe_ = {};
    destination_.in_force.reset();
    type_.in_force.reset();
    enter(State::lost);
    deadline_ = now_ + times_.to_come_back;
}

}  // namespace host::brain
