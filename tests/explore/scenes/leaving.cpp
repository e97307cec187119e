// Exits while everything is still going on.

#include "tests/explore/scenes/all.h"

namespace explore {

const Scene exit_under_fire{
    .name = "exit_under_fire",
    .proves = "Files and notices that arrive while the worker leaves tear no line and no exit.",
    .arguments = {"/shots"},
    .host =
        [] {
            host::connect();
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::downloaded("DSC00001.JPG");
            device::properties({0x0106, 0x0708});
        },
    .second =
        [] {
            device::await_call(Call::set_save_info);
            device::warning(7);
            device::disconnected(0);
        },
};

const Scene exit_under_fire_of_all{
    .name = "exit_under_fire_of_all",
    .proves = "QUIT, a signal, the end of input and a loss at once: one quiet end, status 0.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("QUIT");
            host::write("PRIME");
            host::close_input();
        },
    .camera =
        [] {
            device::answer_connect();
            device::disconnected(0x8208);
        },
    .signals = [] { kernel::raise_signal(15); },
};

const Scene callbacks_after_release{
    .name = "callbacks_after_release",
    .proves = "An SDK whose threads run on after Release disturbs nothing that still exists.",
    .arguments = {"/shots"},
    .prepare = [] { camera.release_waits = false; },
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_call(Call::release);
            device::connected();
            device::downloaded("DSC00001.JPG");
            device::properties({0x0708});
        },
    .second =
        [] {
            device::await_call(Call::release_device);
            device::disconnected(1);
            device::warning(2);
        },
};

const Scene sdk_hangs_at_exit{
    .name = "sdk_hangs_at_exit",
    .proves = "However long the SDK hangs, the process is gone 3 s after its loop, with status 0.",
    .answer = [](const Asked& asked) -> Answer {
        return {.late = asked.call == Call::disconnect || asked.call == Call::release_device
                            ? 60 * second
                            : 0};
    },
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::pause(second);
            device::downloaded("DSC00001.JPG");
            device::pause(2 * second);
            device::warning(1);
        },
    .signals =
        [] {
            kernel::pause(second);
            kernel::raise_signal(15);
        },
};

const Scene host_stops_reading{
    .name = "host_stops_reading",
    .proves = "A host that no longer reads cannot keep the worker beyond the deadline.",
    .host =
        [] {
            host::connect();
            host::await_anywhere("FILE_TYPE|jpeg");
            host::stop_reading();
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::get_properties, 3);
            device::warning(1);
            device::warning(2);
        },
};

const Scene host_reads_late{
    .name = "host_reads_late",
    .proves = "A full pipe holds lines up; none is lost, torn or out of order.",
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::stop_reading();
            host::write("PRIME");
            host::pause(22 * second);
            host::read_again();
            host::await("PRIME_DONE|OK");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::await_connect();
            device::warning(1);
            device::connected();
        },
};

const Scene quit_while_opening{
    .name = "quit_while_opening",
    .proves = "A session that is still opening is released, not disconnected, and stays silent.",
    .host =
        [] {
            host::write("CONNECT");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::await_call(Call::release_device);
            device::disconnected(0);
        },
};

const Scene exit_on_a_slow_machine{
    .name = "exit_on_a_slow_machine",
    .proves = "The deadline may strike between any two steps of the shutdown; the status is 0.",
    .arguments = {"/shots"},
    .host =
        [] {
            host::write("CONNECT");
            host::await("STATUS|Opening camera session");
            host::write("QUIT");
        },
    .camera =
        [] {
            device::answer_connect();
            device::downloaded("DSC00001.JPG");
        },
    .signals = [] { kernel::raise_signal(2); },
    .jumps = 2,
    .jump_length = 2 * second,
};

}  // namespace explore
