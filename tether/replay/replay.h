// tether replay: a worker made of a record.
#pragma once

#include <string>

namespace replay {

struct Options {
    std::string record;
    std::string folder;  // what the host starts the worker with; empty: none
    unsigned run = 0;    // which worker of the record, from 1; 0: each start of a host the next one
    bool fast = false;
    bool strict = false;  // what the host says otherwise ends it with status 3
};

// Ends the process as the recorded worker ended. Comes back only when the record cannot be played:
// the sentence that says why.
std::string carry_out(const Options& options);

}  // namespace replay
