// A wake-up sent between the look at the condition and the wait would be lost.

#include "host/process/mutex.h"

void wait_once(host::Mutex& mutex, std::condition_variable& condition) {
#if !defined(MISUSE)
    const host::MutexLock lock(mutex);
#endif
    mutex.wait(condition);
}
