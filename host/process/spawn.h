// Starting a child process with its own standard streams and a clean signal state; on macOS with no
// other descriptor of this process, elsewhere with those not close-on-exec. None here is left so.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "host/process/pipe.h"

namespace host {

struct SpawnRequest {
    std::string executable;
    std::vector<std::string> arguments;                            // without the executable's name
    std::vector<std::pair<std::string, std::string>> environment;  // on top of this process's own
    std::optional<std::string> error_file;  // standard error is appended here; otherwise shared
    int error_descriptor = -1;              // standard error goes here instead
    // One more that the child gets, as its number 3, such as a lock that it is to hold.
    int inherited_descriptor = -1;
};

// The new process, or nothing and the reason in `error`. The child gets a process group of its own:
// a Ctrl-C at the terminal is the host's to handle, which then ends the worker in order.
std::optional<pid_t> spawn(const SpawnRequest& request, const Descriptor& standard_input,
                           const Descriptor& standard_output, std::string& error);

}  // namespace host
