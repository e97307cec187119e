// What `tether console` can be told: known to tether, which knows all commands, and to the program
// that carries it out.
#pragma once

#include <CLI/CLI.hpp>

#include "tether/session_options.h"

namespace tether {

struct ConsoleOptions {
    SessionOptions session;
    double port = 0;  // 0: a free one
    bool open = false;
};

// The command; the options must outlive it.
CLI::App& declare(CLI::App& app, ConsoleOptions& options);

}  // namespace tether
