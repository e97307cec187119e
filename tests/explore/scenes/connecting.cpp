// Opening and closing a session, with answers that come at every moment.

#include "tests/explore/scenes/all.h"

namespace explore {

const Scene connect_answered{
    .name = "connect_answered",
    .proves = "The answer may come before Connect returns; the settings follow it in their order.",
    .host =
        [] {
            host::write("CONNECT|card");
            host::await("CONNECTED|MODEL-A");
            host::write("PRIME");
            host::await("PRIME_DONE|OK");
            host::write("DISCONNECT");
            host::await("DISCONNECTED|");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::disconnect);
            device::disconnected(0);
        },
};

const Scene connect_returns_late{
    .name = "connect_returns_late",
    .proves = "A Connect that blocks holds up the commands behind it and nothing else.",
    .answer = [](const Asked& asked) -> Answer {
        return {.late = asked.call == Call::connect ? 30 * second : 0};
    },
    .host =
        [] {
            host::write("CONNECT");
            host::write("CONNECT");
            host::await_anywhere("CONNECTED|MODEL-A");
            host::await_anywhere("CONNECTED|already");
            host::write("QUIT");
        },
    .camera = device::answer_connect,
};

const Scene connect_refused{
    .name = "connect_refused",
    .proves = "A refused Connect leaves nothing behind; the next one is a fresh attempt.",
    .answer = [](const Asked& asked) -> Answer {
        return {.result = asked.call == Call::connect && asked.times == 1 ? 0x8201U : 0U};
    },
    .host =
        [] {
            host::write("CONNECT");
            host::await("ERROR|Could not open the camera (0x00008201)");
            host::write("DISCONNECT");
            host::connect();
            host::write("QUIT");
        },
    .camera = device::answer_connect,
};

const Scene no_camera_found{
    .name = "no_camera_found",
    .proves = "A failing enumeration is logged once, and told to the host each time.",
    .answer = [](const Asked& asked) -> Answer {
        if (asked.call != Call::enum_camera_objects || asked.times > 3) {
            return {};
        }
        return {.result = 0x8703};
    },
    .host =
        [] {
            host::write("CONNECT");
            host::write("CONNECT");
            host::write("PRIME");
            host::write("CONNECT");
            host::connect();
            host::close_input();
        },
    .camera = device::answer_connect,
};

const Scene disconnect_crosses_answer{
    .name = "disconnect_crosses_answer",
    .proves = "A DISCONNECT while the answer is on its way, and a new session after it.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("DISCONNECT");
            host::await("DISCONNECTED|");
            host::write("CONNECT");
            host::write("CAPTURE");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_connect(2);
            device::connected();
        },
};

const Scene error_while_opening{
    .name = "error_while_opening",
    .proves = "An error stops the time-out; the handle stays until the host disconnects.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("ERROR|Camera reported 0x00008208");
            host::write("CONNECT");
            host::await("CONNECTED|already");
            host::pause(30 * second);
            host::write("DISCONNECT");
            host::await("DISCONNECTED|");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::error(0x8208);
            device::warning(0x0002008C);
        },
};

const Scene loss_while_opening{
    .name = "loss_while_opening",
    .proves = "A loss while opening is told once and stops the time-out, whatever crosses it.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("DISCONNECTED|");
            host::write("CONNECT");
            host::pause(30 * second);
            host::write("DISCONNECT");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::disconnected(10);
        },
    .second =
        [] {
            device::await_connect();
            device::warning(0x00020002);
            device::warning(1);
        },
};

const Scene another_camera_next_time{
    .name = "another_camera_next_time",
    .proves = "An answer names a camera that was chosen, while the next one is being chosen.",
    .prepare =
        [] {
            camera.on_bus.assign({{"BY|WIFI", "IP"}, {nullptr, "USB"}, {"MODEL-C", nullptr}});
        },
    .answer = [](const Asked& asked) -> Answer {
        // The next list holds only the first camera.
        if (asked.call == Call::enum_camera_objects && asked.times == 2) {
            camera.on_bus.resize(1);
        }
        return {};
    },
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
    .camera =
        [] {
            device::await_connect();
            device::connected(-1);
            device::await_connect(2);
            device::connected(2);
        },
};

}  // namespace explore
