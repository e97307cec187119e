#pragma once

// What Init and Release do: read the environment, set the scene, start and end what runs beside the
// application.

#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

bool start(Hold& hold, CrInt32u log_type) SIM_REQUIRES(g_lock);

// Ends the threads of the SDK once they have delivered what is queued.
void end(Hold& hold) SIM_REQUIRES(g_lock);

// The last step, behind the journal line of Release.
void ended() SIM_REQUIRES(g_lock);

}  // namespace camera_sim
