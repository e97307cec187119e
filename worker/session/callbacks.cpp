// The life of the session as the SDK tells it, on threads of its own. Flags change before lines are
// written; what needs the camera is posted to the main thread.

#include <cstdint>
#include <string>

#include "protocol/emit.h"
#include "protocol/fields.h"
#include "session/sony_worker.h"
#include "threads/command_queue.h"

namespace {

constexpr std::uint32_t reconnecting_warning = 0x00020002;
constexpr std::uint32_t caution_warning = 0x0002008C;

}  // namespace

void SonyWorker::OnConnected(SCRSDK::DeviceConnectionVersioin version) {
    watchdog_armed.exchange(0);
    connected.exchange(true);
    closing.exchange(false);
    emit_log("session up (connection version " +
             std::to_string(static_cast<std::int32_t>(version)) + ")");
    // Ahead of the line, on purpose: no command that the host sends in answer can overtake it.
    post_command("__APPLY_SETTINGS");
    emit("CONNECTED|" + escape_field(camera_name.get()));
}

void SonyWorker::OnDisconnected(sdk::DisconnectReason error) {
    watchdog_armed.exchange(0);
    connected.exchange(false);
    if (closing) {
        return;
    }
    // The handle stays: the SDK may bring the camera back, and the host gives it up with
    // DISCONNECT.
    emit_log("camera went away (" + hex_code(static_cast<std::uint32_t>(error)) + ")");
    emit("DISCONNECTED|");
}

void SonyWorker::OnWarning(sdk::WarningCode warning) {
    const auto code = static_cast<std::uint32_t>(warning);
    if (code == caution_warning) {
        emit_log("the camera is showing a caution on its own screen (0x0002008C)");
        return;
    }
    if (code == reconnecting_warning) {
        // The SDK repeats it while it tries; the host hears of one loss once.
        // Even while closing, on purpose: only OnDisconnected is silent then.
        if (connected.exchange(false)) {
            emit_log("camera went away (the SDK is trying to reconnect)");
            emit("DISCONNECTED|");
        }
        return;
    }
    emit_log("warning " + hex_code(code));
}

void SonyWorker::OnError(sdk::ErrorCode error) {
    watchdog_armed.exchange(0);
    const std::string code = hex_code(static_cast<std::uint32_t>(error));
    emit_log("error " + code);
    emit("ERROR|Camera reported " + code);
}
