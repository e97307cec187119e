// A session in words that a person can read.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

#include "host/values/problem.h"
#include "host/values/requests.h"
#include "host/values/session_state.h"

namespace tether {

// What the session is waiting for: a few words, or none when it is ready, down or has nothing to
// do.
std::string progress_of(const host::SessionState& state);

// What was wrong with the way in which the worker ended, a sentence; empty when it ended in order.
std::string what_was_wrong(const host::Ended& ended);

// On one line, without what would move the terminal's cursor: names are the camera's, and what a
// worker says may be anything.
std::string shown(std::string_view text);

// What a problem says, with the SDK's code for `tether explain`, on one line.
std::string sentence(const host::Problem& problem);

// "25.0 MB"
std::string in_bytes(std::uintmax_t bytes);

// "1.25 s"; with one digit, "1.2 s"
std::string in_seconds(std::chrono::duration<double> time, int digits = 2);

// The path as it is below the folder, or as it is.
std::string name_in(const std::string& folder, const std::string& path);

}  // namespace tether
