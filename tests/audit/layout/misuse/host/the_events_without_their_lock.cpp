// The worker's lines, what is typed and signals are posted by a thread each.

#include "tests/audit/layout/misuse/host/everything_public.h"

bool nothing_waits(tether::Events& events) {
#if !defined(MISUSE)
    const host::MutexLock lock(events.mutex_);
#endif
    return events.waiting_.empty();
}
