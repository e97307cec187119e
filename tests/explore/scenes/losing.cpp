// Cameras that go away and come back.

#include "tests/explore/scenes/all.h"

namespace explore {

namespace {

constexpr std::uint32_t reconnecting = 0x00020002;
constexpr std::uint32_t camera_lost = 0x8208;

}  // namespace

const Scene camera_comes_back{
    .name = "camera_comes_back",
    .proves = "A camera that the SDK brings back gets its settings again.",
    .arguments = {"/shots"},
    .host =
        [] {
            host::connect();
            host::await("DISCONNECTED|");
            host::write("CONNECT");
            host::await_anywhere("CONNECTED|already");
            host::write("PRIME");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::warning(reconnecting);
            device::warning(reconnecting);
            device::connected();
        },
};

const Scene loss_told_by_two_threads{
    .name = "loss_told_by_two_threads",
    .proves = "However often the SDK repeats that it is reconnecting, the host hears of it once.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("DISCONNECTED|");
            host::write("PRIME");
            host::await("PRIME_DONE|OK");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::set_property);
            device::warning(reconnecting);
        },
    .second =
        [] {
            device::await_connect();
            device::await_call(Call::set_property);
            device::warning(reconnecting);
        },
};

const Scene disconnect_crosses_loss{
    .name = "disconnect_crosses_loss",
    .proves = "A DISCONNECT at the moment of a loss: the SDK's answer to it stays silent.",
    .host =
        [] {
            host::connect();
            host::write("DISCONNECT");
            host::await("DISCONNECTED|");
            host::write("CAPTURE");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::warning(reconnecting);
            device::disconnected(camera_lost);
        },
    .second =
        [] {
            device::await_call(Call::disconnect);
            device::disconnected(0);
        },
};

const Scene new_session_crosses_old_loss{
    .name = "new_session_crosses_old_loss",
    .proves = "A loss of the old session that comes late meets the next session at any moment.",
    .host =
        [] {
            host::connect();
            host::write("DISCONNECT");
            host::write("CONNECT");
            host::pause(25 * second);
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_connect(2);
            device::connected();
        },
    .second =
        [] {
            device::await_call(Call::disconnect);
            device::disconnected(camera_lost);
        },
};

}  // namespace explore
