// The scripts of the SDK's threads, and of the kernel's signals.

#include <CRSDK/CameraRemote_SDK.h>

#include "tests/explore/scene.h"
#include "tests/explore/scheduler.h"
#include "tests/explore/signals.h"

namespace explore {

namespace {

bool is_connected(const Need& need) {
    return camera.connects.size() >= static_cast<std::size_t>(need.number);
}

bool is_called(const Need& need) {
    return static_cast<const std::vector<std::uint64_t>*>(need.object)->size() >=
           static_cast<std::size_t>(need.number);
}

// Calls the worker back, as the SDK's threads do at any time until Release has returned.
template <typename Operation>
void call_back(Callback which, std::uint64_t number, Text text, Operation operation) {
    device::await_connect(1);
    if (camera.released && camera.release_waits) {
        Need need;
        need.what = "call back after the SDK was released";
        need.due = never;
        await(need);
    }
    Object& sessions = object_at(&camera_sessions);
    change(sessions);
    acquire(sessions);
    ++camera.callbacks_running;
    const auto who = static_cast<std::uint8_t>(run.self->number);
    record({.kind = Kind::callback_begins,
            .which = static_cast<std::uint8_t>(which),
            .who = who,
            .text = text,
            .number = number});
    operation(*camera.callback);
    record({.kind = Kind::callback_ends, .who = who});
    --camera.callbacks_running;
    change(sessions);
}

}  // namespace

namespace device {

void await_connect(std::size_t number) {
    Need need;
    need.what = "see Connect called";
    need.met = is_connected;
    need.number = static_cast<std::int64_t>(number);
    need.due = never;
    await(need);
    run.self->hash = mix(run.self->hash, camera.connects[number - 1]);
}

void await_call(Call call, std::size_t number) {
    const auto& begun = camera.begun[static_cast<int>(call)];
    Need need;
    need.what = "see an SDK function called";
    need.met = is_called;
    need.object = &begun;
    need.number = static_cast<std::int64_t>(number);
    need.due = never;
    await(need);
    run.self->hash = mix(run.self->hash, begun[number - 1]);
}

void set(std::uint32_t code, std::uint64_t value) {
    offer();
    change(object_at(&camera_state));
    property_of(code).value = value;
}

void go_away() {
    offer();
    change(object_at(&camera_state));
    camera.gone = true;
}

void come_back() {
    offer();
    change(object_at(&camera_state));
    camera.gone = false;
}

void connected(int version) {
    call_back(Callback::connected, static_cast<std::uint64_t>(version), 0,
              [version](SCRSDK::IDeviceCallback& worker) {
                  worker.OnConnected(static_cast<SCRSDK::DeviceConnectionVersioin>(version));
              });
}

void answer_connect() {
    await_connect();
    connected();
}

void disconnected(std::uint32_t error) {
    call_back(Callback::disconnected, error, 0,
              [error](SCRSDK::IDeviceCallback& worker) { worker.OnDisconnected(error); });
}

void warning(std::uint32_t code) {
    call_back(Callback::warning, code, 0,
              [code](SCRSDK::IDeviceCallback& worker) { worker.OnWarning(code); });
}

void error(std::uint32_t code) {
    call_back(Callback::error, code, 0,
              [code](SCRSDK::IDeviceCallback& worker) { worker.OnError(code); });
}

void properties(std::initializer_list<std::uint32_t> codes) {
    CrInt32u copies[8];
    CrInt32u count = 0;
    std::uint64_t seen = 0;
    for (const std::uint32_t code : codes) {
        copies[count++] = code;
        seen |= code == 0x0708 || code == 0x070D ? 1 : code == 0x0106 ? 2 : 0;
    }
    call_back(Callback::properties, seen, 0, [&](SCRSDK::IDeviceCallback& worker) {
        worker.OnPropertyChangedCodes(count, copies);
    });
}

void downloaded(const char* name, std::uint32_t type) {
    char copy[64] = {};
    const std::size_t length = std::string_view(name).copy(copy, sizeof copy - 1);
    call_back(Callback::download, type, keep(std::string_view(copy, length)),
              [&](SCRSDK::IDeviceCallback& worker) { worker.OnCompleteDownload(copy, type); });
}

}  // namespace device

namespace kernel {

void raise_signal(int number) {
    explore::raise_signal(number);
}

void wake_for_nothing() {
    wake_waiters();
}

}  // namespace kernel

}  // namespace explore
