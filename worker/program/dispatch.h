#pragma once

#include <string>

#include "session/sony_worker.h"
#include "threads/main_thread.h"

// Takes commands from the queue, one at a time, until QUIT or until the input has ended and the
// queue is empty.
void run_main_loop(SonyWorker& worker) REQUIRES(main_thread);

// Carries out one command line. False: it was QUIT.
bool dispatch(SonyWorker& worker, const std::string& line) REQUIRES(main_thread);
