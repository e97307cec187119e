#pragma once

#include <string>

namespace explore {

// The worker under test: its unmodified sources as a shared library whose every memory access,
// atomic and call of the C library comes to this program.
struct WorkerLibrary {
    int (*main)(int argc, char** argv);
};

// Loads it and takes the snapshot. Complains on standard error and returns false when that fails.
bool load_worker(const std::string& path, WorkerLibrary& library);

// Puts the worker's global data and heap back as they were after loading.
void restore_worker();

}  // namespace explore
