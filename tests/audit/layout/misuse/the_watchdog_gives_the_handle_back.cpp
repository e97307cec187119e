// The main thread may be using the handle.

#include "session/sony_worker.h"
#include "threads/command_queue.h"

void SonyWorker::connect_watchdog_thread() {
#if defined(MISUSE)
    sdk::release_device(device_handle);
#else
    post_command("__CONNECT_TIMEOUT|1");
#endif
}
