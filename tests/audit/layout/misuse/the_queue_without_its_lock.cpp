// Another thread may be appending.

#include "threads/command_queue.cpp"

bool nothing_queued() {
#if !defined(MISUSE)
    MutexLock lock(g_cmd_mutex);
#endif
    return g_cmds.empty();
}
