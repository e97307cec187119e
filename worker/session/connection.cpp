// Finding, opening and closing the camera. The answer to an opening comes through the callbacks or
// the watchdog.

#include <cstdint>
#include <string>
#include <string_view>

#include "protocol/emit.h"
#include "session/connect_timeout.h"
#include "session/sony_worker.h"

namespace {

// Logs every camera and returns the first one on USB, if any.
sdk::Camera find_usb_camera(const sdk::CameraList& cameras) REQUIRES(main_thread) {
    sdk::Camera chosen;
    for (std::uint32_t index = 0; index < cameras.count(); ++index) {
        const sdk::Camera camera = cameras.camera(index);
        const char* const type = camera ? camera.connection_type() : nullptr;
        const char* const model = camera ? camera.model() : nullptr;
        emit_log(std::string("camera \"") + (model != nullptr ? model : "?") + "\" over " +
                 (type != nullptr ? type : "?"));
        if (!chosen && type != nullptr && std::string_view(type) == "USB") {
            chosen = camera;
        }
    }
    return chosen;
}

}  // namespace

void SonyWorker::connect() {
    // By the handle, not by connected: an opening under way, or one that the SDK is bringing back,
    // is not opened twice.
    if (device_handle != 0) {
        emit("CONNECTED|already");
        return;
    }
    emit("STATUS|Looking for a camera");
    sdk::CameraList cameras;
    const std::uint32_t found = cameras.result();
    if (found != sdk::ok || cameras.count() == 0) {
        cameras.hand_back();
        if (found != sdk::ok && found != last_enum_error) {
            const char* const hint = found == sdk::adapter_missing
                                         ? " — the SDK could not create its USB adapter; check "
                                           "Contents/Frameworks/CrAdapter"
                                         : "";
            emit_log("enumeration failed (" + hex_code(found) + ")" + hint);
        }
        last_enum_error = found;
        emit("ERROR|Camera not detected");
        return;
    }

    // Left as it is by a look that finds a camera, on purpose: the next failure is logged only if
    // it differs from the last one, however many cameras were opened in between.
    sdk::Camera camera = find_usb_camera(cameras);
    if (!camera) {
        camera = cameras.camera(0);
    }
    if (!camera) {
        cameras.hand_back();
        last_enum_error = found;
        emit("ERROR|Camera not detected");
        return;
    }
    const char* const model = camera.model();
    camera_name.publish(model != nullptr ? model : "Sony camera");
    emit("STATUS|Opening camera session");

    // The deadline before the number: a watchdog that sees this attempt armed must see its deadline
    // too.
    const std::uint32_t attempt = connect_attempt.fetch_add(1) + 1;
    connect_deadline_ms.exchange(steady_now_ms() + connect_timeout.count());
    watchdog_armed.exchange(attempt);

    const std::uint32_t result = camera.connect(this, &device_handle);
    cameras.hand_back();
    if (result != sdk::ok) {
        watchdog_armed.exchange(0);
        device_handle = 0;
        emit("ERROR|Could not open the camera (" + hex_code(result) + ")");
    }
}

void SonyWorker::disconnect(bool quiet) {
    watchdog_armed.exchange(0);
    if (device_handle != 0) {
        // Before the SDK is told: an OnDisconnected that it sends in answer must find the flag set
        // and stay silent.
        closing.exchange(true);
        if (connected) {
            sdk::disconnect(device_handle);
        }
        sdk::release_device(device_handle);
        device_handle = 0;
        connected.exchange(false);
    }
    if (!quiet) {
        emit("DISCONNECTED|");
    }
}

void SonyWorker::connect_timed_out(unsigned int attempt) {
    if (attempt != connect_attempt || connected || device_handle == 0) {
        return;
    }
    // The watchdog has told the host. There is no session to end, only the handle to give back.
    closing.exchange(true);
    sdk::release_device(device_handle);
    device_handle = 0;
}
