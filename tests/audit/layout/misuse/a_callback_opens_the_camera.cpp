// An SDK's thread that opens the camera anew would meet the main thread inside the SDK.

#include "session/sony_worker.h"
#include "threads/command_queue.h"

void SonyWorker::OnError(sdk::ErrorCode) {
#if defined(MISUSE)
    connect();
#else
    post_command("CONNECT");
#endif
}
