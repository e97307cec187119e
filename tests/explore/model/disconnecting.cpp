// DISCONNECT, the quiet one of the shutdown, and the handle of a Connect that timed out.

#include <cstdlib>

#include "tests/explore/model/steps.h"

namespace explore::model {

bool disconnect(State& state, const Event* event) {
    switch (state.at) {
        case At::disconnect:
            state.armed = 0;
            if (state.handle == 0) {
                return goes_on(state, state.quiet ? At::release_call : At::disconnect_line);
            }
            return goes_on(state, At::disconnect_begins);
        case At::disconnect_begins:
            state.closing = true;
            return goes_on(state, At::disconnect_looks);
        case At::disconnect_looks:
            return goes_on(state, state.connected ? At::disconnect_call : At::release_device_call);
        case At::disconnect_call:
            return calls(state, event, Call::disconnect, 0, 0, At::disconnect_answer, state.handle);
        case At::disconnect_answer:
            state.at = At::release_device_call;
            return answers(event, Call::disconnect);
        case At::release_device_call:
            return calls(state, event, Call::release_device, 0, 0, At::release_device_answer,
                         state.handle);
        case At::release_device_answer:
            state.handle = 0;
            state.at = At::disconnect_clears;
            return answers(event, Call::release_device);
        case At::disconnect_clears:
            state.connected = false;
            return goes_on(state, state.quiet ? At::release_call : At::disconnect_line);
        default:
            state.command = 0;
            return line(state, event, "DISCONNECTED|", At::next_command);
    }
}

bool connect_timed_out(State& state, const Event* event) {
    switch (state.at) {
        case At::timed_out: {
            const auto attempt =
                static_cast<std::uint32_t>(std::strtoul(argument(state).c_str(), nullptr, 10));
            if (attempt != state.attempt || state.connected || state.handle == 0) {
                return command_done(state);
            }
            return goes_on(state, At::timed_out_closes);
        }
        case At::timed_out_closes:
            state.closing = true;
            return goes_on(state, At::timed_out_call);
        case At::timed_out_call:
            return calls(state, event, Call::release_device, 0, 0, At::timed_out_answer,
                         state.handle);
        default:
            state.handle = 0;
            command_done(state);
            return answers(event, Call::release_device);
    }
}

}  // namespace explore::model
