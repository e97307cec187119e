#pragma once

#include "tests/explore/scheduler.h"

// A function that the worker's library calls in place of the C or C++ library's own. The library is
// linked with --wrap for each name in wrapped.txt, so that only the worker's calls come here.
#define WORKER_CALL extern "C" __attribute__((visibility("default")))

// Where in the worker the call stands, for reports.
#define CALLER __builtin_return_address(0)

namespace explore {

// False while the library is being loaded: its global objects are made before any run, alone.
inline bool in_run() {
    return run.self != nullptr;
}

}  // namespace explore
