// Another thread may be appending.

#include "worker/command_queue.cpp"

bool nothing_queued() {
#if !defined(MISUSE)
    MutexLock lock(g_cmd_mutex);
#endif
    return g_cmds.empty();
}
