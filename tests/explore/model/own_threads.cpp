// The worker's own threads beside main: the reader, the signal thread, the watchdog.

#include "tests/explore/model/state.h"

namespace explore::model {

bool step_reader(State& state) {
    if (!state.reading || state.queue_closed || state.input_over) {
        return false;
    }
    if (state.inputs > 0) {
        const Text line = state.input[0];
        --state.inputs;
        std::memmove(state.input, state.input + 1, sizeof(Text) * state.inputs);
        state.input[state.inputs] = 0;
        if (!text_of(line).empty()) {
            post(state, line);
        }
        return true;
    }
    if (state.input_closed) {
        state.input_over = true;
        return true;
    }
    return false;
}

// Only the first signal counts.
bool step_signal_thread(State& state, const Event* event) {
    switch (state.signal_step) {
        case 0:
            if (event != nullptr || state.pending_signals == 0 || state.signal_handled) {
                return false;
            }
            state.signal_number = static_cast<std::uint32_t>(__builtin_ctz(state.pending_signals));
            state.pending_signals &= ~(1U << state.signal_number);
            state.signal_handled = true;
            state.signal_step = 1;
            return true;
        case 1:
            if (!is_line(event, log + ("signal " + std::to_string(state.signal_number) +
                                       " — closing the camera session before exit"))) {
                return false;
            }
            state.signal_step = 2;
            return true;
        default:
            if (event != nullptr) {
                return false;
            }
            post(state, keep("QUIT"));
            state.signal_step = 0;
            state.signal_number = 0;
            return true;
    }
}

// Takes the attempt whose deadline has passed, and no other, out of the watchdog's care.
bool step_watchdog(State& state, const Event* event, Time until) {
    switch (state.watchdog_step) {
        case 0:
            if (event != nullptr || state.armed == 0 || until < state.deadline) {
                return false;
            }
            state.watchdog_attempt = state.armed;
            state.armed = 0;
            state.watchdog_step = 1;
            return true;
        case 1:
            if (!is_line(event, log + std::string("no answer to Connect in 20 s — giving the "
                                                  "handle back"))) {
                return false;
            }
            state.watchdog_step = 2;
            return true;
        case 2:
            if (!is_line(event, "ERROR|Could not open the camera (timeout) — replug the camera")) {
                return false;
            }
            state.watchdog_step = 3;
            return true;
        default:
            if (event != nullptr) {
                return false;
            }
            post(state, keep("__CONNECT_TIMEOUT|" + std::to_string(state.watchdog_attempt)));
            state.watchdog_step = 0;
            state.watchdog_attempt = 0;
            return true;
    }
}

}  // namespace explore::model
