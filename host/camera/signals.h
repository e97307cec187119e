// Signals are for the threads of the host itself.
#pragma once

namespace host {

// Blocks, in the calling thread and those that it starts, every signal but those that a fault of
// the thread itself raises. SIGPIPE is among them: a write to a worker that is gone only fails.
void block_signals();

}  // namespace host
