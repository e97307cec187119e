// One property read, or written with retries while the camera is busy.

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

constexpr std::uint32_t busy_result = 0x8402;
constexpr int retries = 5;

}  // namespace

void write_property(State& state, std::uint32_t code, std::uint64_t value, At back) {
    state.code = code;
    state.value = value;
    state.retries = 0;
    go_and_return(state, At::write_call, back);
}

void read_property(State& state, std::uint32_t code, At back) {
    state.code = code;
    go_and_return(state, At::read_call, back);
}

void forget_property(State& state) {
    state.code = 0;
    state.value = 0;
    state.result = 0;
    state.retries = 0;
}

bool property_access(State& state, const Event* event) {
    switch (state.at) {
        case At::write_call:
            return calls(state, event, Call::set_property, state.code, state.value,
                         At::write_answer, state.handle);
        case At::write_answer:
            if (!answers(event, Call::set_property)) {
                return false;
            }
            state.result = static_cast<std::uint32_t>(event->number);
            if (state.result == busy_result && state.retries < retries) {
                return goes_on(state, At::write_retry);
            }
            return done(state);
        case At::write_retry:
            // Only while the session is up.
            if (!state.connected) {
                return done(state);
            }
            ++state.retries;
            sleep(state, 400 * millisecond, At::write_call);
            return true;
        case At::read_call:
            return calls(state, event, Call::get_properties, state.code, 0, At::read_answer,
                         state.handle);
        case At::read_release_call:
            return calls(state, event, Call::release_properties, 0, 0, At::read_release_answer,
                         state.handle);
        case At::read_release_answer:
            done(state);
            return answers(event, Call::release_properties);
        default:
            if (!answers(event, Call::get_properties)) {
                return false;
            }
            state.readable = event->number == 0 && event->text != unreadable_text;
            state.value = event->value;
            // What was lent is handed back, whatever the result was.
            return event->who != 0 ? goes_on(state, At::read_release_call) : done(state);
    }
}

}  // namespace explore::model
