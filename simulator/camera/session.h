#pragma once

// The life of a session: idle, opening, open, lost (the camera is gone), closed (by Disconnect).

#include <vector>

#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

enum class Happening {
    accepted,          // Connect was taken
    answered,          // the camera came up
    answered_error,    // it answered with an error
    answered_loss,     // it answered by going away
    gone,              // the camera went away for good
    gone_for_a_while,  // it went away and the SDK waits for it
    back,              // it came back to an SDK that waits for it
    disconnected,      // the host ended the session
    handed_back,       // the host gave the handle back
};

// Every change of the stage is made here. `code` goes into the callback that it causes, if any.
void happen(Happening what, CrInt32u code = 0) SIM_REQUIRES(g_lock);

// Takes a camera into a session and has it answer as the scene says. Waits, without the lock, for
// an answer that is to come before Connect returns.
void open_session(Hold& hold, std::size_t body, IDeviceCallback* application,
                  CrDeviceHandle* handle) SIM_REQUIRES(g_lock);
void give_answer() SIM_REQUIRES(g_lock);

// 0 when the handle's session is up.
CrInt32u judge_handle(CrDeviceHandle handle) SIM_REQUIRES(g_lock);

// Tells the application that these properties of the body changed, if a session is up and there are
// any.
void report_change(const std::vector<CrInt32u>& codes) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
