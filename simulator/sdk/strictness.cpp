#include "simulator/sdk/strictness.h"

#include <cstdlib>
#include <unistd.h>

#include "simulator/camera/state.h"

namespace camera_sim {

void stop(const std::string& sentence) {
    tell(sentence + " (" + describe(state()) + ")");
    std::abort();
}

void tell(const std::string& sentence) {
    const std::string line = "camera-sim: " + sentence + "\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace camera_sim
