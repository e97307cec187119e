// The first and the last moments of a worker without a camera.

#include "tests/explore/scenes/all.h"

namespace explore {

namespace {

constexpr int hangup = 1;
constexpr int interrupt = 2;
constexpr int terminate = 15;

// As a host may leave it to its children.
void ignore_signals() {
    process.ignored_signals = 1U << hangup | 1U << interrupt | 1U << terminate;
}

template <int number>
void raise_once_ready() {
    host::await("READY|OK");
    kernel::raise_signal(number);
}

}  // namespace

const Scene start_and_quit{
    .name = "start_and_quit",
    .proves = "Commands written before the worker is ready wait for it, and QUIT ends it at once.",
    .host =
        [] {
            host::write("PRIME");
            host::write("nonsense|x");
            host::write("QUIT");
        },
};

const Scene end_of_input{
    .name = "end_of_input",
    .proves = "What was written before the end of input is still handled; then the worker leaves.",
    .host =
        [] {
            host::write("PRELOAD");
            host::write("PUMP_STOP");
            host::close_input();
        },
};

const Scene input_closed_at_once{
    .name = "input_closed_at_once",
    .proves = "A worker without a host never stays, whenever the host goes.",
    .host = [] { host::close_input(); },
};

const Scene sdk_does_not_start{
    .name = "sdk_does_not_start",
    .proves = "An SDK that cannot be started ends the process with status 1, without a READY.",
    .answer = [](const Asked& asked) -> Answer {
        return {.result = asked.call == Call::init ? 1U : 0U};
    },
    .host =
        [] {
            host::write("PRIME");
            host::close_input();
        },
    .signals = [] { kernel::raise_signal(terminate); },
};

const Scene sdk_does_not_start_unread{
    .name = "sdk_does_not_start_unread",
    .proves =
        "A worker that gives up is gone 3 s later with status 1, though nobody reads its lines.",
    .answer = [](const Asked& asked) -> Answer {
        return {.result = asked.call == Call::init ? 1U : 0U};
    },
    .host =
        [] {
            host::await("ERROR|Sony Camera Remote SDK failed to initialise");
            host::stop_reading();
        },
    .signals = [] { kernel::raise_signal(terminate); },
};

const Scene lines_behind_quit{
    .name = "lines_behind_quit",
    .proves = "Nothing written behind QUIT is handled, and nothing of it disturbs the exit.",
    .host =
        [] {
            host::await("READY|OK");
            host::write("QUIT");
            host::write("PRIME");
            host::write("CONNECT");
            host::write("PRIME");
            host::close_input();
        },
};

const Scene signal_at_any_moment{
    .name = "signal_at_any_moment",
    .proves =
        "A termination signal ends the worker whenever it comes, and never kills a started one.",
    .host = [] { host::write("PRIME"); },
    .signals = [] { kernel::raise_signal(terminate); },
};

const Scene hangup_ignored_by_host{
    .name = "hangup_ignored_by_host",
    .proves = "A worker that was started with SIGHUP ignored is ended by it all the same.",
    .prepare = ignore_signals,
    .host = raise_once_ready<hangup>,
};

const Scene interrupt_ignored_by_host{
    .name = "interrupt_ignored_by_host",
    .proves = "A worker that was started with SIGINT ignored is ended by it all the same.",
    .prepare = ignore_signals,
    .host = raise_once_ready<interrupt>,
};

const Scene termination_ignored_by_host{
    .name = "termination_ignored_by_host",
    .proves = "A worker that was started with SIGTERM ignored is ended by it all the same.",
    .prepare = ignore_signals,
    .host = raise_once_ready<terminate>,
};

const Scene signals_pile_up{
    .name = "signals_pile_up",
    .proves = "The first signal counts; the others, a QUIT and the end of input change nothing.",
    .host =
        [] {
            host::await("READY|OK");
            host::write("PRIME");
            host::write("QUIT");
            host::close_input();
        },
    .signals =
        [] {
            kernel::raise_signal(interrupt);
            kernel::raise_signal(hangup);
            kernel::raise_signal(terminate);
        },
};

const Scene waking_for_nothing{
    .name = "waking_for_nothing",
    .proves = "A wake-up that nobody sent is no command and no end of input.",
    .host =
        [] {
            host::await("READY|OK");
            host::write("PRIME");
            host::await("PRIME_DONE|OK");
            host::write("PRELOAD");
            host::close_input();
        },
    .signals =
        [] {
            kernel::wake_for_nothing();
            kernel::wake_for_nothing();
        },
};

}  // namespace explore
