// Two that count would give two attempts one number.

#include "session/sony_worker.h"

void SonyWorker::OnError(sdk::ErrorCode) {
#if defined(MISUSE)
    connect_attempt.fetch_add(1);
#else
    watchdog_armed.exchange(0);
#endif
}
