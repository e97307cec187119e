// The worker is of the SDK's own type too: its base is.

#include "session/sony_worker.h"

void SonyWorker::OnDisconnected(sdk::DisconnectReason) {
#if defined(MISUSE)
    sdk::Handle handle = 0;
    Connect(nullptr, this, &handle);
#endif
}
