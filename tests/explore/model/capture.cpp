// One shot.

#include "tests/explore/model/steps.h"

namespace explore::model {

bool capture(State& state, const Event* event) {
    switch (state.at) {
        case At::capture:
            if (!state.connected) {
                return goes_on(state, At::plain_reply);
            }
            return goes_on(state, At::half_press_call);
        case At::half_press_call:
            return calls(state, event, Call::set_property, 0x0001, 2, At::half_press_answer,
                         state.handle);
        case At::half_press_answer:
            return answered_then_sleeps(state, event, Call::set_property, 700 * millisecond,
                                        At::press_call);
        case At::press_call:
            return calls(state, event, Call::send_command, 0, 1, At::press_answer, state.handle);
        case At::press_answer:
            return answered_then_sleeps(state, event, Call::send_command, 35 * millisecond,
                                        At::lift_call);
        case At::lift_call:
            return calls(state, event, Call::send_command, 0, 0, At::lift_answer, state.handle);
        case At::lift_answer:
            state.at = At::let_go_call;
            return answers(event, Call::send_command);
        case At::let_go_call:
            return calls(state, event, Call::set_property, 0x0001, 1, At::let_go_answer,
                         state.handle);
        case At::let_go_answer:
            state.at = At::capture_line;
            return answers(event, Call::set_property);
        default:
            state.command = 0;
            return line(state, event, "REMOTE_CAPTURED|OK", At::next_command);
    }
}

}  // namespace explore::model
