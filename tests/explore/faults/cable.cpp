// The cable pulled at any point of a session in which a shot is taken.

#include "tests/explore/faults/circumstances.h"
#include "tests/explore/faults/tours.h"
#include "tests/explore/scheduler.h"

namespace explore {

namespace {

void shoot() {
    host::connect();
    host::settle();
    host::write("CAPTURE");
    host::settle();
    host::write("CAPTURE");
    host::write("DISCONNECT");
    host::settle();
    host::write("QUIT");
}

void answer() {
    device::answer_connect();
    device::await_call(Call::send_command, 2);
    device::downloaded("DSC00001.JPG");
}

bool is_turn(const Need& need) {
    return run.turns >= static_cast<std::uint32_t>(need.number);
}

void pull_cable() {
    device::await_connect();
    Need need;
    need.what = "see the cable pulled";
    need.met = is_turn;
    need.number = circumstances.cable_pulled_at;
    need.due = never;
    await(need);
    note_cable_pulled();
    device::go_away();
}

const Scene told_as_loss{
    .name = "cable_pulled",
    .proves =
        "The cable pulled at any point of a shot: the half-press is let go, the loss is told.",
    .arguments = {"/shots"},
    .host = shoot,
    .camera = answer,
    .second =
        [] {
            pull_cable();
            device::disconnected(0x8208);
        },
};

const Scene told_as_reconnecting{
    .name = "cable_pulled_and_plugged",
    .proves = "The same with an SDK that brings the camera back.",
    .arguments = {"/shots"},
    .host = shoot,
    .camera = answer,
    .second =
        [] {
            pull_cable();
            device::warning(0x00020002);
            device::pause(500 * millisecond);
            device::come_back();
            device::connected();
        },
};

const Scene told_as_error{
    .name = "cable_pulled_with_error",
    .proves = "The same with an SDK that reports an error and the loss after it.",
    .arguments = {"/shots"},
    .host = shoot,
    .camera = answer,
    .second =
        [] {
            pull_cable();
            device::error(0x8208);
            device::disconnected(0x8208);
        },
};

}  // namespace

const std::vector<const Scene*>& cable_scenes() {
    static const auto& all =
        *new std::vector<const Scene*>{&told_as_loss, &told_as_reconnecting, &told_as_error};
    return all;
}

}  // namespace explore
