#include "tests/explore/camera.h"

#include "tests/explore/scheduler.h"

namespace explore {

Camera camera;

const char camera_state = 'c';
const char camera_sessions = 'n';

void begin_camera() {
    camera.on_bus.assign({{"MODEL-A", "USB"}});
    camera.properties.assign({
        {0x0001, 1, true},  // half-press: let go
        {0x0106, 1, true},  // file type: JPEG
        {0x0119, 2, true},  // save destination: card
        {0x011A, 1, true},  // priority: the camera itself
        {0x0507, 1, true},
        {0x0708, 2, true},  // a card in the first slot
        {0x070D, 1, true},  // none in the second
    });
    camera.listed.clear();
    camera.answer = nullptr;
    camera.release_waits = true;
    camera.callback = nullptr;
    camera.handles_given = 0;
    camera.open_handle = 0;
    camera.initialised = false;
    camera.released = false;
    camera.list_lent = false;
    camera.array_lent = false;
    camera.gone = false;
    camera.callbacks_running = 0;
    for (auto& calls : camera.begun) {
        calls.clear();
    }
    camera.connects.clear();
}

CameraProperty& property_of(std::uint32_t code) {
    for (CameraProperty& property : camera.properties) {
        if (property.code == code) {
            return property;
        }
    }
    complain("the worker asks for property 0x%04X, which it has no business with", code);
}

}  // namespace explore
