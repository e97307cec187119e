#pragma once

#include <csignal>

// Blocks SIGHUP, SIGINT and SIGTERM in this thread and all that it starts, ignores SIGPIPE, and
// returns the blocked set. Called before the first thread: from then on only the signal thread
// meets them.
sigset_t block_termination_signals();

// Body of the signal thread: the first termination signal asks the main loop to quit, later ones
// change nothing.
void signal_thread(sigset_t signals);
