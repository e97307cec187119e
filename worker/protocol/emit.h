#pragma once

#include <cstdint>
#include <string>

#include "threads/thread_annotations.h"

// The one way out to the host. Any thread; each line reaches the pipe whole and before the call
// returns, and blocks while the host does not read. Write errors are not reported: a host that is
// gone shows as the end of input.

// Writes one complete line: key, "|", payload, without its line feed.
void emit(const std::string& line);

// Writes a diagnostic line; the text goes out as it is, not escaped.
void emit_log(const std::string& text);

// "0x%08X", the form in which SDK codes appear in lines.
std::string hex_code(std::uint32_t code);

// Waits for the line that is on its way and lets no other begin. The last thing before the process
// exits: the C library flushes and unbuffers stdout there without waiting for threads that still
// write.
void close_output() NO_THREAD_SAFETY_ANALYSIS;
