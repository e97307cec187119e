// Two that close at once would close one number twice, and the second might be somebody else's
// file.

#include "tests/audit/layout/misuse/host/everything_public.h"

void close_at_once(host::LineStream& stream) {
#if !defined(MISUSE)
    const host::MutexLock lock(stream.mutex_);
#endif
    stream.wake_up_.close();
}
