#include <cstdint>

#include "session/sdk.h"

std::uint32_t look_once() REQUIRES(main_thread) {
    static sdk::CameraList cameras;
    return cameras.result();
}
