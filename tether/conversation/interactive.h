// The terminal and the worker connected: what is typed goes in, what comes out is shown.
#pragma once

#include "tether/conversation/conversation.h"

namespace tether {

// The exit status of tether.
int connect_terminal(const host::SpawnRequest& worker, Terminal& terminal, Record& record);

}  // namespace tether
