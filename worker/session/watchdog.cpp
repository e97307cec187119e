// The connect watchdog: tells the host about a Connect that the SDK never answered. Its own thread;
// it never touches the SDK or the handle, which the main thread gives back.

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

#include "protocol/emit.h"
#include "session/connect_timeout.h"
#include "session/sony_worker.h"
#include "threads/command_queue.h"

namespace {

constexpr std::chrono::milliseconds watchdog_period{250};

}  // namespace

void SonyWorker::connect_watchdog_thread() {
    for (;;) {
        std::this_thread::sleep_for(watchdog_period);
        std::uint32_t attempt = watchdog_armed;
        if (attempt == 0 || steady_now_ms() < connect_deadline_ms) {
            continue;
        }
        // Only the attempt that was seen late, and only if it still waits: by now it may have been
        // answered, given up, or followed by a newer one with a deadline of its own.
        if (!watchdog_armed.compare_exchange_strong(attempt, 0)) {
            continue;
        }
        emit_log("no answer to Connect in 20 s — giving the handle back");
        emit("ERROR|Could not open the camera (timeout) — replug the camera");
        post_command("__CONNECT_TIMEOUT|" + std::to_string(attempt));
    }
}
