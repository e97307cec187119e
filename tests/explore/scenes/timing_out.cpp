// Connects that the SDK does not answer in time, and everything that can cross the watchdog.

#include "tests/explore/scenes/all.h"

namespace explore {

namespace {

constexpr char timed_out[] = "ERROR|Could not open the camera (timeout) — replug the camera";

}  // namespace

const Scene connect_times_out{
    .name = "connect_times_out",
    .proves = "An unanswered Connect is given up after 20 s, and the next one starts afresh.",
    .host =
        [] {
            host::write("CONNECT");
            host::await(timed_out);
            host::write("CONNECT");
            host::write("CONNECT");
            host::await_beginning("CONNECTED|");
            host::write("DISCONNECT");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect(2);
            device::connected();
        },
};

const Scene answer_crosses_time_out{
    .name = "answer_crosses_time_out",
    .proves = "An OnConnected that crosses the time-out brings the session up all the same.",
    .host =
        [] {
            host::write("CONNECT");
            host::pause(20 * second);
            host::await_anywhere("CONNECTED|MODEL-A");
            host::write("CAPTURE");
            host::write("SAVE_DEST|disk");
            host::write("CONNECT");
            host::write("DISCONNECT");
            host::await("DISCONNECTED|");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::pause(20 * second);
            device::connected();
        },
};

const Scene disconnect_crosses_time_out{
    .name = "disconnect_crosses_time_out",
    .proves = "A late time-out never reports or releases another attempt than its own.",
    .host =
        [] {
            host::write("CONNECT");
            host::pause(20 * second);
            host::write("DISCONNECT");
            host::write("CONNECT");
            host::pause(10 * second);
            host::write("CONNECT");
            host::pause(15 * second);
            host::write("DISCONNECT");
            host::write("QUIT");
        },
};

const Scene error_crosses_time_out{
    .name = "error_crosses_time_out",
    .proves = "An error or a loss at the moment of the time-out.",
    .host =
        [] {
            host::write("CONNECT");
            host::pause(20 * second);
            host::await_anywhere("ERROR|Camera reported 0x00008208");
            host::write("DISCONNECT");
            host::write("CONNECT");
            host::pause(25 * second);
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::pause(20 * second);
            device::error(0x8208);
            device::disconnected(0x8208);
        },
};

const Scene quit_crosses_time_out{
    .name = "quit_crosses_time_out",
    .proves = "A QUIT at the moment of the time-out closes the session once and quietly.",
    .host =
        [] {
            host::write("CONNECT");
            host::pause(20 * second);
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::pause(20 * second);
            device::connected();
        },
};

const Scene machine_stands_still{
    .name = "machine_stands_still",
    .proves =
        "Twenty seconds may pass between any two steps; no attempt is given up before its time.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("DISCONNECT");
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::pause(25 * second);
            host::write("QUIT");
        },
    .jumps = 1,
    .jump_length = 21 * second,
};

const Scene machine_stands_still_again{
    .name = "machine_stands_still_again",
    .proves = "The same twice over, with an answer under way.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::pause(second);
            host::write("DISCONNECT");
            host::write("QUIT");
        },
    .camera = device::answer_connect,
    .jumps = 2,
    .jump_length = 21 * second,
};

}  // namespace explore
