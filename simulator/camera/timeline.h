#pragma once

// What happens after a while: a thread runs the steps when their time has come, with the lock held.

#include <functional>

#include "simulator/sdk/lock.h"

namespace camera_sim {

// A step without delay runs at once, on the calling thread. Steps of the same moment run in order.
// During Release a step with a delay is dropped.
void after(Duration delay, std::function<void()> step) SIM_REQUIRES(g_lock);

// Drops the steps to come and ends the thread.
void end_timeline(Hold& hold) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
