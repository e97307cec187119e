// The main thread may be reading the names of the cameras in it.

#include "session/sony_worker.h"
#include "threads/command_queue.h"

namespace {
sdk::CameraList* found = nullptr;
}

void SonyWorker::connect_watchdog_thread() {
#if defined(MISUSE)
    found->hand_back();
#else
    static_cast<void>(found);
    post_command("__CONNECT_TIMEOUT|1");
#endif
}
