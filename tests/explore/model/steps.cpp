#include "tests/explore/model/steps.h"

namespace explore::model {

bool line(State& state, const Event* event, const std::string& text, At next) {
    state.at = next;
    return is_line(event, text);
}

bool logs(State& state, const Event* event, const std::string& text, At next) {
    return line(state, event, log + text, next);
}

bool calls(State& state, const Event* event, Call call, std::uint64_t number, std::uint64_t value,
           At next, std::uint64_t handle, Text text) {
    state.at = next;
    return event != nullptr && event->kind == Kind::call_begins &&
           event->which == static_cast<std::uint8_t>(call) && event->number == number &&
           event->value == value && event->who == handle && event->text == text;
}

bool answers(const Event* event, Call call) {
    return event != nullptr && event->kind == Kind::call_ends &&
           event->which == static_cast<std::uint8_t>(call);
}

bool goes_on(State& state, At next) {
    state.at = next;
    return true;
}

void go_and_return(State& state, At there, At back) {
    state.back[state.depth++] = back;
    state.at = there;
}

bool done(State& state) {
    --state.depth;
    state.at = state.back[state.depth];
    state.back[state.depth] = At{};
    if (state.at == At::next_command) {
        state.command = 0;
    }
    return true;
}

bool command_done(State& state) {
    state.command = 0;
    state.at = At::next_command;
    return true;
}

void sleep(State& state, Time length, At next) {
    state.wake = state.now + length;
    go_and_return(state, At::sleeping, next);
}

bool answered_then_sleeps(State& state, const Event* event, Call call, Time length, At next) {
    if (!answers(event, call)) {
        return false;
    }
    state.now = event->time;
    sleep(state, length, next);
    return true;
}

}  // namespace explore::model
