// CONNECT: finding and opening a camera.

#include "tests/explore/model/steps.h"

namespace explore::model {

namespace {

constexpr std::uint32_t adapter_missing = 0x8703;

// "MODEL/TYPE;" for each camera of the list, ";" for one that is missing.
std::vector<std::string> cameras_of(const State& state) {
    std::vector<std::string> cameras;
    std::string camera;
    for (const char byte : text_of(state.list)) {
        if (byte == ';') {
            cameras.push_back(camera);
            camera.clear();
        } else {
            camera += byte;
        }
    }
    return cameras;
}

std::string model_of(const std::string& camera) {
    return camera.empty() ? "?" : camera.substr(0, camera.rfind('/'));
}
std::string type_of(const std::string& camera) {
    return camera.empty() ? "?" : camera.substr(camera.rfind('/') + 1);
}

// False: the camera to be opened is missing.
bool choose_camera(State& state) {
    const std::vector<std::string> cameras = cameras_of(state);
    state.chosen = 0;
    for (std::size_t i = cameras.size(); i > 0; --i) {
        if (type_of(cameras[i - 1]) == "USB") {
            state.chosen = static_cast<std::uint32_t>(i - 1);
        }
    }
    if (cameras[state.chosen].empty()) {
        state.chosen = 0;
        return false;
    }
    const std::string model = model_of(cameras[state.chosen]);
    state.camera_name = keep(model == "?" ? "Sony camera" : model);
    return true;
}

bool no_camera_found(State& state, const Event* event) {
    switch (state.at) {
        case At::none_found_release:
            return calls(state, event, Call::release_enumeration, 0, 0, At::none_found_released);
        case At::none_found_released:
            state.at = At::none_found_log;
            return answers(event, Call::release_enumeration);
        case At::none_found_log: {
            const std::uint32_t result = state.result;
            const bool silent = result == 0 || result == state.last_enum_error;
            state.last_enum_error = result;
            state.result = 0;
            if (silent) {
                return event == nullptr && goes_on(state, At::none_found_line);
            }
            const char* const hint = result == adapter_missing
                                         ? " — the SDK could not create its USB adapter; check "
                                           "Contents/Frameworks/CrAdapter"
                                         : "";
            return logs(state, event, "enumeration failed (" + hex_code(result) + ")" + hint,
                        At::none_found_line);
        }
        default:
            state.list = 0;
            state.command = 0;
            return line(state, event, "ERROR|Camera not detected", At::next_command);
    }
}

bool find_camera(State& state, const Event* event) {
    switch (state.at) {
        case At::connect: {
            const std::string word = argument(state);
            if (!word.empty()) {
                state.word = keep(word);
            }
            if (state.handle != 0) {
                return goes_on(state, At::plain_reply);
            }
            return goes_on(state, At::looking_line);
        }
        case At::looking_line:
            return line(state, event, "STATUS|Looking for a camera", At::enum_call);
        case At::enum_call:
            return calls(state, event, Call::enum_camera_objects, 3, 0, At::enum_answer);
        case At::enum_answer:
            if (!answers(event, Call::enum_camera_objects)) {
                return false;
            }
            state.result = static_cast<std::uint32_t>(event->number);
            state.list = event->text;
            state.index = 0;
            if (state.result == 0 && event->value > 0) {
                return goes_on(state, At::camera_line);
            }
            return goes_on(state, event->who != 0 ? At::none_found_release : At::none_found_log);
        case At::camera_line: {
            const std::vector<std::string> cameras = cameras_of(state);
            const std::string& camera = cameras[state.index++];
            const bool last = state.index == cameras.size();
            return logs(state, event, "camera \"" + model_of(camera) + "\" over " + type_of(camera),
                        last ? At::choose : At::camera_line);
        }
        case At::choose:
            state.index = 0;
            return goes_on(state,
                           choose_camera(state) ? At::opening_line : At::none_chosen_release);
        case At::none_chosen_release:
            return calls(state, event, Call::release_enumeration, 0, 0, At::none_chosen_released);
        default:
            state.last_enum_error = 0;
            state.at = At::none_found_line;
            return answers(event, Call::release_enumeration);
    }
}

bool open_camera(State& state, const Event* event) {
    switch (state.at) {
        case At::opening_line:
            return line(state, event, "STATUS|Opening camera session", At::arm);
        case At::arm:
            ++state.attempt;
            state.deadline = state.deadline_latest = state.now + 20 * second;
            state.armed = state.attempt;
            return goes_on(state, At::connect_call);
        case At::connect_call:
            if (event != nullptr) {
                state.deadline_latest = event->time + 20 * second;
            }
            return calls(state, event, Call::connect, state.chosen, 0, At::connect_answer);
        case At::connect_answer:
            if (!answers(event, Call::connect)) {
                return false;
            }
            state.result = static_cast<std::uint32_t>(event->number);
            state.handle = state.result == 0 ? event->value : 0;
            return goes_on(state, At::connect_release_list);
        case At::connect_release_list:
            state.list = 0;
            state.chosen = 0;
            return calls(state, event, Call::release_enumeration, 0, 0, At::connect_released_list);
        case At::connect_released_list:
            state.at = At::connect_refused;
            return answers(event, Call::release_enumeration) &&
                   (state.result != 0 || command_done(state));
        case At::connect_refused:
            state.armed = 0;
            return goes_on(state, At::connect_error_line);
        default: {
            const std::string code = hex_code(state.result);
            state.result = 0;
            state.command = 0;
            return line(state, event, "ERROR|Could not open the camera (" + code + ")",
                        At::next_command);
        }
    }
}

}  // namespace

bool connect(State& state, const Event* event) {
    if (state.at >= At::none_found_release && state.at <= At::none_found_line) {
        return no_camera_found(state, event);
    }
    return state.at < At::opening_line ? find_camera(state, event) : open_camera(state, event);
}

}  // namespace explore::model
