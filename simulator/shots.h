#pragma once

// The shutter and what follows from it: focus, exposure, the buffer, the files.

#include "simulator/lock.h"

namespace camera_sim {

// The shutter button, by the host: half-way, and down.
void hold_half_way(bool held) SIM_REQUIRES(g_lock);
void hold_down(bool held) SIM_REQUIRES(g_lock);

bool shots_under_way() SIM_REQUIRES(g_lock);
void end_shots(Hold& hold) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
