#include "tether/serve/values.h"

#include <chrono>
#include <string>
#include <vector>

#include "host/values/problem_texts.h"
#include "tether/rpc/text.h"

namespace serve {

using rpc::Json;
using rpc::valid_text;

namespace {

template <typename Number>
Json number_or_null(const std::optional<Number>& number) {
    return number ? Json(*number) : Json();
}

std::int64_t milliseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

template <typename Value>
Json word_or_null(const std::optional<Value>& value) {
    return value ? Json(word(*value)) : Json();
}

template <typename Value>
Json json(const host::Setting<Value>& setting) {
    return {{"asked", word_or_null(setting.asked)}, {"inForce", word_or_null(setting.in_force)}};
}

template <typename Value>
Json list(const std::vector<Value>& values) {
    Json all = Json::array();
    for (const Value& value : values) {
        all.push_back(serve::json(value));
    }
    return all;
}

}  // namespace

Json json(const host::Problem& problem) {
    return {{"code", word(problem.code)},
            {"severity", severity(problem.code) == host::Severity::error ? "error" : "warning"},
            {"text", valid_text(problem.text)},
            {"advice", advice(problem.code)},
            {"sdk", problem.sdk ? Json(host::written_sdk_code(*problem.sdk)) : Json()},
            {"shot", number_or_null(problem.shot)}};
}

Json json(const host::Picture& picture) {
    return {{"id", valid_text(picture.id)},
            {"shot", number_or_null(picture.shot)},
            {"tag", valid_text(picture.tag)},
            {"pair", valid_text(picture.pair)},
            {"kind", word(picture.kind)},
            {"format", word(picture.format)},
            {"path", valid_text(picture.path)},
            {"cameraName", valid_text(picture.camera_name)},
            {"bytes", picture.bytes},
            {"whole", picture.whole},
            {"at", valid_text(picture.at)},
            {"afterMs", picture.after ? Json(picture.after->count()) : Json()},
            {"recovered", picture.recovered}};
}

Json json(const host::Shot& shot) {
    return {{"shot", shot.number},
            {"tag", valid_text(shot.tag)},
            {"status", word(shot.status)},
            {"firedAt", shot.fired_at.empty() ? Json() : Json(valid_text(shot.fired_at))},
            {"pictures", list(shot.pictures)},
            {"problems", list(shot.problems)}};
}

Json json(const host::SessionState& state) {
    return {{"state", word(state.state)},
            {"camera", state.camera ? Json(valid_text(*state.camera)) : Json()},
            {"simulated", state.simulated},
            {"folder", valid_text(state.folder)},
            {"saveDestination", json(state.save_destination)},
            {"fileType", json(state.file_type)},
            {"restarts", state.restarts},
            {"problems", list(state.problems)}};
}

Json json(const host::Ended& ended) {
    return {{"worker", word(ended.worker)}, {"status", ended.status}};
}

Json json(const host::WireLine& line, std::uint64_t dropped) {
    return {{"direction", line.direction == host::WireLine::Direction::to_worker ? ">" : "<"},
            {"text", valid_text(line.text)},
            {"atMs", milliseconds(line.at)},
            {"dropped", dropped}};
}

rpc::Error error(const host::Problem& problem) {
    return {rpc::code::problem, valid_text(problem.text), json(problem)};
}

}  // namespace serve
