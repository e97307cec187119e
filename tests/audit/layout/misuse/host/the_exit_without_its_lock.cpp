// The watching thread may be writing it, and the number be free for another process.

#include "tests/audit/layout/misuse/host/everything_public.h"

bool has_ended(host::ExitWatch& watch) {
#if !defined(MISUSE)
    const host::MutexLock lock(watch.mutex_);
#endif
    return watch.exit_.has_value();
}
