// Two lines would mix, or one be written into what has taken the number of the closed pipe.

#include "tests/audit/layout/misuse/host/everything_public.h"

bool write_at_once(host::WorkerProcess& worker) {
#if !defined(MISUSE)
    const host::MutexLock lock(worker.input_mutex_);
#endif
    return worker.write("CAPTURE\n", host::Clock::now());
}
