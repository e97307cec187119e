// Fires the shutter once. Main thread only; the pauses hold up the main loop.

#include <chrono>
#include <thread>

#include "protocol/emit.h"
#include "session/sony_worker.h"
#include "settings/property_codes.h"

namespace {

constexpr std::chrono::milliseconds focusing_time{700};
constexpr std::chrono::milliseconds press_time{35};
constexpr std::uint32_t press = 1;
constexpr std::uint32_t lift = 0;

}  // namespace

void SonyWorker::remote_capture() {
    if (!connected) {
        emit("ERROR|Camera not connected");
        return;
    }
    // No result is looked at, so that a half-press is always let go. The line says that the
    // sequence was sent, not that a picture was taken.
    sdk::Property half_press_button;
    half_press_button.set_code(property::shutter_half_press);
    half_press_button.set_value_type();
    half_press_button.set_value(half_press::held);
    half_press_button.write(device_handle);
    std::this_thread::sleep_for(focusing_time);
    sdk::send_release_command(device_handle, press);
    std::this_thread::sleep_for(press_time);
    sdk::send_release_command(device_handle, lift);
    half_press_button.set_value(half_press::let_go);
    half_press_button.write(device_handle);
    emit("REMOTE_CAPTURED|OK");
}
