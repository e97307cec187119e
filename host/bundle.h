// Where the worker stands that was built together with this program.
#pragma once

#include <filesystem>

namespace host {

// The worker in the bundle's place beside the folder of the running program:
// ../Contents/MacOS/sony-worker.
std::filesystem::path worker_beside_this_program();

}  // namespace host
