#pragma once

#include <optional>
#include <string>

#include "threads/main_thread.h"

// The one queue of commands, first in, first out and unbounded: host lines from the reader,
// internal commands from the other threads, all taken by the main thread. An entry is a whole line
// without its line ending.

// Any thread; never waits for the main thread. False: the main loop has ended, and the line was
// dropped.
bool post_command(std::string line);

// The reader, once standard input is exhausted: what is queued is still handled, then the main loop
// ends.
void end_input();

// Waits for the oldest command; nothing when the queue is empty and the input has ended.
std::optional<std::string> next_command() REQUIRES(main_thread);

// The main loop has ended: what is queued and what comes later is dropped, so that a host that goes
// on writing cannot fill the memory while the camera is being closed.
void close_commands() REQUIRES(main_thread);
