// tether tap: stands in a worker's place in anybody's host. Every byte passes, a record is kept,
// and at the end is said what the host did wrong.
#pragma once

#include <string>
#include <vector>

namespace tap {

struct Options {
    std::vector<std::string> worker;  // and its arguments
    std::string record;               // empty: a new file in the working directory
    bool redact = false;
    bool strict = false;  // a complaint makes the status 3
};

// Ends the process as the worker ends. Comes back only when the worker cannot be started: the
// sentence that says why.
std::string carry_out(const Options& options);

}  // namespace tap
