#include "simulator/camera/state.h"

namespace camera_sim {
namespace {

State*& g_state = *new State*(new State);

}  // namespace

Lock& g_lock = *new Lock;
std::condition_variable& g_changed = *new std::condition_variable;

void Hold::sleep(Duration duration) {
    const Clock::time_point due = Clock::now() + duration;
    std::condition_variable nobody;
    while (Clock::now() < due) {
        nobody.wait_until(lock_, due);
    }
}

State& state() {
    return *g_state;
}

void renew_state() {
    delete g_state;
    g_state = new State;
}

Body& body() {
    return state().bodies[state().session.body];
}

std::string describe(const State& state) {
    if (!state.started) {
        return state.released ? "released" : "not started";
    }
    std::string text = std::string("the session is ") + to_text(state.session.stage);
    if (state.session.handle != 0) {
        text += ", handle " + std::to_string(state.session.handle);
    }
    if (state.session.body < state.bodies.size()) {
        const Body& body = state.bodies[state.session.body];
        text += ", " + body.describe() + ", card " + to_text(body.card);
    }
    return text;
}

const char* to_text(Stage stage) {
    switch (stage) {
        case Stage::idle:
            return "idle";
        case Stage::opening:
            return "opening";
        case Stage::open:
            return "open";
        case Stage::lost:
            return "lost";
        case Stage::closed:
            break;
    }
    return "closed";
}

}  // namespace camera_sim
