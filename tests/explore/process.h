#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/explore/time.h"
#include "tests/explore/trace.h"

// The worker's process as the system sees it: its standard streams, its signals, its end.
namespace explore {

// A line that one side has sent, with everything that led to it.
struct Sent {
    Text text;
    std::uint64_t hash;
};

struct Process {
    // Standard input: what the host has written, and how far the reader has come.
    std::vector<Sent> input;
    std::size_t input_read;
    bool input_closed;
    bool input_locked;  // a thread is inside fgets and holds the stream
    bool input_lockable;

    // Standard output: what lies in the stream's buffer, and what has reached the host.
    std::string buffer;
    int buffer_writer;
    std::vector<Sent> output;
    bool output_full;  // the host does not read, and the pipe has no room

    std::uint32_t pending_signals;
    std::uint32_t ignored_signals;
};

extern Process process;

// As it stands before main.
void begin_process();

// The host has read nothing yet.
void begin_reading();

// The library has been loaded: what it has registered to run at exit stays so in each run.
void keep_exit_functions();
void forget_exit_functions();

// Whoever waits for a condition variable: to be woken for no reason, and between runs.
void wake_waiters();
void forget_waiters();

// What exit does to standard output.
void close_streams();

[[noreturn]] void exit_process(int status);

}  // namespace explore
