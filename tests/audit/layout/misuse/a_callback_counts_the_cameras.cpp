// The list is the SDK's own object: to count is to call it.

#include "session/sony_worker.h"
#include "threads/command_queue.h"

namespace {
sdk::CameraList* found = nullptr;
}

void SonyWorker::OnError(sdk::ErrorCode) {
#if defined(MISUSE)
    if (found->count() == 0) {
        post_command("DISCONNECT");
    }
#else
    static_cast<void>(found);
    post_command("DISCONNECT");
#endif
}
