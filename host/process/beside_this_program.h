// The worker that was built together with this program, and the tree around it.
#pragma once

#include <filesystem>

namespace host {

// The worker in the bundle's place beside the folder of the running program:
// ../Contents/MacOS/sony-worker.
std::filesystem::path worker_beside_this_program();

std::filesystem::path folder_of_this_program();

// The folder that holds Contents and the folder of this program.
std::filesystem::path bundle_beside_this_program();

}  // namespace host
