// How long things may take.
#pragma once

#include <chrono>
#include <cstdlib>

#include "host/process/clock.h"
#include "tests/sanitized.h"

// Everything is built with the same flags: a sanitized program runs a sanitized worker.
constexpr int slowness = sanitized ? 10 : 1;

// Far beyond what anything here needs; only a failing test waits for it.
constexpr std::chrono::seconds patience{60};

// For a worker with nothing to wait for. It takes a few milliseconds, which bench/ measures; here
// it is told from one that waits for its exit deadline, on a machine that may have much else to do.
constexpr std::chrono::milliseconds prompt{sanitized ? 2000 : 1000};

// For a worker that an SDK call holds up.
constexpr std::chrono::milliseconds exit_deadline{3000};
constexpr std::chrono::milliseconds exit_deadline_passed{3000 + 300 * slowness};

// The number of rounds of a loop that finds rare failures: the larger one when
// CAMERA_WORKER_LONG is set.
inline int rounds(int quick, int long_run) {
    return std::getenv("CAMERA_WORKER_LONG") != nullptr ? long_run : quick / (sanitized ? 4 : 1);
}
