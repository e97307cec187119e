#pragma once

// The control socket: lines of the scene language from other processes, each answered by "ok" or
// "error: ...", and `wait` and `state`, which only make sense live. A thread for each client. Of a
// path that is not its own to take, the process is stopped with a sentence.

#include "simulator/sdk/lock.h"

namespace camera_sim {

void listen_for_control(const char* path) SIM_REQUIRES(g_lock);

// Turns the clients away. Their threads are not joined: they may be inside a `wait` or a read.
void stop_control() SIM_REQUIRES(g_lock);

}  // namespace camera_sim
