#pragma once

// The journal: one line per SDK call and per callback, each written with a single write(2), so that
// readers never see half a line and nothing is lost when the process dies.

#include <optional>
#include <string>

#include "simulator/sdk/lock.h"

namespace camera_sim {

void open_journal(const char* path) SIM_REQUIRES(g_lock);
void close_journal() SIM_REQUIRES(g_lock);

// No duration: the call has not come back.
void journal(Clock::time_point start, std::optional<Duration> duration, const std::string& call,
             const std::string& result) SIM_REQUIRES(g_lock);

// The name that the calling thread's lines carry; "other" for a thread that was not named.
void name_thread(const char* name);
bool on_sdk_thread();

}  // namespace camera_sim
