// Where the session stands, and that everybody knows.
#include <utility>

#include "host/brain/brain.h"

namespace host::brain {

SessionState Brain::state() const {
    SessionState state;
    state.state = state_;
    state.camera = camera_;
    state.simulated = simulated_;
    state.folder = folder_;
    state.save_destination = destination_;
    state.file_type = type_;
    state.restarts = restarts_told_;
    state.problems = problems_.all();
    state.waited_for = folder_waited_for_;
    return state;
}

// A state is told at once, so that no answer comes before it.
void Brain::enter(State state) {
    state_ = state;
    deadline_ = never;
    dirty_ = true;
    tell_state();
}

void Brain::tell_state() {
    if (std::exchange(dirty_, false)) {
        do_now(StateChanged{state()});
    }
}

// No session is up, so nothing is in force.
void Brain::forget_session() {
    camera_.reset();
    destination_.in_force.reset();
    type_.in_force.reset();
    opening_ = {};
    settling_ = {};
    probe_ = {};
    loss_in_doubt_ = false;
    pair_refusal_.reset();
}

}  // namespace host::brain
