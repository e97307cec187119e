#include "tests/explore/calls/sdk_call.h"

#include "tests/explore/scheduler.h"

namespace explore {

namespace {

constexpr std::uint32_t invalid_handle = 0x8002;
constexpr std::uint32_t no_such_device = 0x8208;

}  // namespace

Answer begin(Call call, std::uint64_t number, std::uint64_t value, Text text, std::int64_t handle) {
    offer();
    if (run.self->number != 0) {
        complain("%s calls the SDK", run.self->name);
    }
    if (camera.released || camera.initialised == (call == Call::init)) {
        complain("an SDK call out of turn");
    }
    change(object_at(&camera_state));
    auto& begun = camera.begun[static_cast<int>(call)];
    begun.push_back(run.self->hash);
    record({.kind = Kind::call_begins,
            .which = static_cast<std::uint8_t>(call),
            .who = static_cast<std::uint8_t>(handle),
            .text = text,
            .number = number,
            .value = value});
    Answer answer;
    if (camera.answer != nullptr) {
        answer = camera.answer(
            {call, static_cast<std::uint32_t>(number), value, static_cast<int>(begun.size())});
    }
    if (answer.late > 0) {
        Need need;
        need.what = "return from an SDK call";
        need.due = run.now + answer.late;
        await(need);
    }
    return answer;
}

void end(Call call, std::uint64_t result, std::uint64_t value, Text text, bool lent) {
    record({.kind = Kind::call_ends,
            .which = static_cast<std::uint8_t>(call),
            .who = static_cast<std::uint8_t>(lent ? 1 : 0),
            .text = text,
            .number = result,
            .value = value});
}

std::uint32_t result_for(const Answer& answer, std::int64_t handle) {
    if (handle != camera.open_handle || handle == 0) {
        return invalid_handle;
    }
    return camera.gone ? no_such_device : answer.result;
}

}  // namespace explore
