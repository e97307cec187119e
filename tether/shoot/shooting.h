// Carrying a plan out: the shoot on the one hand, the worker and the user on the other.
#pragma once

#include "tether/conversation/conversation.h"
#include "tether/shoot/shoot.h"

namespace tether {

// The exit status of tether.
int carry_out(const Plan& plan, const host::SpawnRequest& worker, Terminal& terminal,
              Record& record);

}  // namespace tether
