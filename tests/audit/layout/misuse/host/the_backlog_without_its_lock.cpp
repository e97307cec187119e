// The drain thread may be adding.

#include "tests/audit/layout/misuse/host/everything_public.h"

bool a_line_waits(host::LineStream& stream) {
#if !defined(MISUSE)
    const host::MutexLock lock(stream.mutex_);
#endif
    return stream.backlog_.has_line();
}
