// What the worker does when the SDK calls it back.

#include <string>

#include "tests/explore/model/state.h"

namespace explore::model {

namespace {

constexpr std::uint64_t reconnecting = 0x00020002;
constexpr std::uint64_t caution = 0x0002008C;
constexpr std::uint64_t file_arrived = 0xFFFFFFFF;

// The step of a callback that has done all it had to do.
constexpr std::uint8_t finished = 100;

bool on_connected(State& state, Calling& calling, const Event* event) {
    switch (calling.step) {
        case 0:
            state.armed = 0;
            break;
        case 1:
            state.connected = true;
            break;
        case 2:
            state.closing = false;
            break;
        case 3:
            if (!is_line(event,
                         log + ("session up (connection version " +
                                std::to_string(static_cast<std::int32_t>(calling.number)) + ")"))) {
                return false;
            }
            break;
        case 4:
            post(state, keep("__APPLY_SETTINGS"));
            break;
        case 5:
            calling.text = state.camera_name;
            break;
        default:
            if (!is_line(event, "CONNECTED|" + escaped(text_of(calling.text)))) {
                return false;
            }
            calling.step = finished;
            return true;
    }
    ++calling.step;
    return true;
}

bool on_disconnected(State& state, Calling& calling, const Event* event) {
    switch (calling.step) {
        case 0:
            state.armed = 0;
            break;
        case 1:
            state.connected = false;
            break;
        case 2:
            if (state.closing) {
                calling.step = finished;
                return true;
            }
            break;
        case 3:
            if (!is_line(event, log + ("camera went away (" + hex_code(calling.number) + ")"))) {
                return false;
            }
            break;
        default:
            if (!is_line(event, "DISCONNECTED|")) {
                return false;
            }
            calling.step = finished;
            return true;
    }
    ++calling.step;
    return true;
}

bool on_warning(State& state, Calling& calling, const Event* event) {
    if (calling.number == caution) {
        calling.step = finished;
        return is_line(event, log + std::string("the camera is showing a caution on its own screen "
                                                "(0x0002008C)"));
    }
    if (calling.number != reconnecting) {
        calling.step = finished;
        return is_line(event, log + ("warning " + hex_code(calling.number)));
    }
    switch (calling.step) {
        case 0:
            calling.step = state.connected ? 1 : finished;
            state.connected = false;
            return true;
        case 1:
            calling.step = 2;
            return is_line(event,
                           log + std::string("camera went away (the SDK is trying to reconnect)"));
        default:
            calling.step = finished;
            return is_line(event, "DISCONNECTED|");
    }
}

bool on_error(State& state, Calling& calling, const Event* event) {
    switch (calling.step) {
        case 0:
            state.armed = 0;
            calling.step = 1;
            return true;
        case 1:
            calling.step = 2;
            return is_line(event, log + ("error " + hex_code(calling.number)));
        default:
            calling.step = finished;
            return is_line(event, "ERROR|Camera reported " + hex_code(calling.number));
    }
}

bool on_properties(State& state, Calling& calling) {
    if (calling.step == 0) {
        if ((calling.number & 1) != 0) {
            post(state, keep("__CARD_CHECK"));
        }
        calling.step = 1;
        return true;
    }
    if ((calling.number & 2) != 0) {
        post(state, keep("__FILETYPE_CHECK"));
    }
    calling.step = finished;
    return true;
}

bool on_download(State& state, Calling& calling, const Event* event) {
    // The name and the folder are kept as one text once the folder has been looked at: the line
    // of the path and, after a line feed, the name.
    const std::string& text = text_of(calling.text);
    switch (calling.step) {
        case 0:
            if (calling.number != file_arrived || text.empty()) {
                calling.step = finished;
                return true;
            }
            calling.text =
                keep((text[0] == '/' ? text : text_of(state.folder) + "/" + text) + "\n" + text);
            calling.step = 1;
            return true;
        case 1:
            calling.step = 2;
            return is_line(event, log + ("landed " + text.substr(text.rfind('\n') + 1)));
        default:
            calling.step = finished;
            return is_line(event, "DOWNLOADED|" + escaped(text.substr(0, text.rfind('\n'))));
    }
}

}  // namespace

bool callback_waits_for_line(const Calling& calling) {
    switch (static_cast<Callback>(calling.which)) {
        case Callback::connected:
            return calling.step == 3 || calling.step == 6;
        case Callback::disconnected:
            return calling.step == 3 || calling.step == 4;
        case Callback::warning:
            return calling.number != reconnecting || calling.step > 0;
        case Callback::error:
        case Callback::download:
            return calling.step > 0;
        case Callback::properties:
            return false;
    }
    return false;
}

bool step_callback(State& state, int slot, const Event* event) {
    Calling& calling = state.calling[slot];
    if (calling.who == 0) {
        return false;
    }
    if (calling.step == finished) {
        if (event == nullptr || event->kind != Kind::callback_ends || event->who != calling.who) {
            return false;
        }
        calling = Calling{};
        return true;
    }
    if (callback_waits_for_line(calling) != (event != nullptr)) {
        return false;
    }
    switch (static_cast<Callback>(calling.which)) {
        case Callback::connected:
            return on_connected(state, calling, event);
        case Callback::disconnected:
            return on_disconnected(state, calling, event);
        case Callback::warning:
            return on_warning(state, calling, event);
        case Callback::error:
            return on_error(state, calling, event);
        case Callback::properties:
            return on_properties(state, calling);
        case Callback::download:
            return on_download(state, calling, event);
    }
    return false;
}

}  // namespace explore::model
