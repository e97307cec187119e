// Children of the tests: shell scripts in the worker's place.
#pragma once

#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <signal.h>
#include <string>

#include "host/process/worker_process.h"

// Far beyond what any of these children needs; only a failing test waits for it.
constexpr std::chrono::seconds patience{30};

// Most of these children know no QUIT; none is worth climbing the ladder for.
struct Kill {
    void operator()(host::WorkerProcess* child) const {
        child->signal(SIGKILL);
        delete child;
    }
};
using Child = std::unique_ptr<host::WorkerProcess, Kill>;

inline Child start(const host::SpawnRequest& request) {
    std::string error;
    Child child(host::WorkerProcess::start(request, error).release());
    EXPECT_EQ(error, "");
    return child;
}

inline Child start_script(const std::string& script) {
    return start({"/bin/sh", {"-c", script}, {}, {}});
}

// The next line's text, or what came instead of a line.
inline std::string next_text(host::WorkerProcess& child) {
    if (const auto line = child.next_line(host::after(patience))) {
        return line->whole ? line->text : line->text + " (unfinished)";
    }
    return child.output_ended() ? "(end of output)" : "(nothing)";
}
