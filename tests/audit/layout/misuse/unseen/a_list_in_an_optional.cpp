#include <optional>

#include "session/sdk.h"

void look_on_any_thread() {
    std::optional<sdk::CameraList> cameras;
    cameras.emplace();
}
