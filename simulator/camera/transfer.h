#pragma once

// The files on their way to the computer: one thread makes them, one after the other, at the rate
// of the bus, and reports each when it is whole and has its name.

#include "simulator/camera/shots.h"
#include "simulator/sdk/lock.h"

namespace camera_sim {

// What becomes of the shot depends on the session that is open now: when it ends, so do its files.
void send_to_computer(const Shot& shot) SIM_REQUIRES(g_lock);

// A file that is on its way is given up when its session has ended.
void look_at_session_again() SIM_REQUIRES(g_lock);

// Gives up what is on its way and ends the thread.
void end_transfer(Hold& hold) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
