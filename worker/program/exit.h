#pragma once

#include "session/sony_worker.h"
#include "threads/main_thread.h"

// Closes the camera session without a word to the host, ends the SDK and leaves with status 0, at
// the latest 3 s after the call, however long the SDK takes.
[[noreturn]] void shut_down(SonyWorker& worker) REQUIRES(main_thread);

// Leaves with status 1, within 3 s too: the SDK could not be started, so there is nothing to close.
[[noreturn]] void give_up();

// Leaves the process while its detached threads still run: nothing that they use is destroyed, the
// frame of main with the SonyWorker included.
[[noreturn]] void leave(int status);
