// A wake-up sent between the look at the queue and the wait would be lost.

#include "threads/command_queue.cpp"

void wait_once() {
#if !defined(MISUSE)
    MutexLock lock(g_cmd_mutex);
#endif
    g_cmd_mutex.wait(g_cmd_cv);
}
