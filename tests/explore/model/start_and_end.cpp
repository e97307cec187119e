// Start-up and shutdown.

#include "tests/explore/model/steps.h"

namespace explore::model {

bool start_up(State& state, const Event* event) {
    switch (state.at) {
        case At::banner:
            return line(state, event, "CPP_WORKER|START sony-1.0", At::adapter_line);
        case At::adapter_line:
            return logs(state, event,
                        "USB transport adapters found: "
                        "/bundle/Contents/MacOS/../Frameworks/CrAdapter",
                        At::init_call);
        case At::init_call:
            return calls(state, event, Call::init, 0, 0, At::init_answer);
        case At::init_answer:
            if (!answers(event, Call::init)) {
                return false;
            }
            state.at = event->number == 0 ? At::version_call : At::init_error_line;
            return true;
        case At::init_error_line:
            state.result = 1;
            state.loop_end = event != nullptr ? event->time : 0;
            return line(state, event, "ERROR|Sony Camera Remote SDK failed to initialise",
                        At::leaving);
        case At::version_call:
            return calls(state, event, Call::get_sdk_version, 0, 0, At::version_answer);
        case At::version_answer:
            if (!answers(event, Call::get_sdk_version)) {
                return false;
            }
            state.value = event->number;
            return goes_on(state, At::version_line);
        case At::version_line: {
            const std::uint64_t version = state.value;
            state.value = 0;
            return logs(state, event,
                        "Camera Remote SDK " + std::to_string(version >> 24 & 0xFF) + "." +
                            std::to_string(version >> 16 & 0xFF) + "." +
                            std::to_string(version >> 8 & 0xFF),
                        At::ready_line);
        }
        default:
            state.reading = true;
            return line(state, event, "READY|OK", At::next_command);
    }
}

bool shutdown(State& state, const Event* event) {
    switch (state.at) {
        case At::loop_ended:
            state.queue_closed = true;
            state.queued = 0;
            std::memset(state.queue, 0, sizeof state.queue);
            state.command = 0;
            state.quiet = true;
            state.loop_end = state.now;
            return goes_on(state, At::disconnect);
        case At::release_call:
            return calls(state, event, Call::release, 0, 0, At::release_answer);
        case At::release_answer:
            state.result = 0;
            state.at = At::leaving;
            return answers(event, Call::release);
        default:
            return event != nullptr && event->kind == Kind::exits && event->number == state.result;
    }
}

}  // namespace explore::model
