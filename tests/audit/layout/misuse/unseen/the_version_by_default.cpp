#include <cstdint>

#include "session/sdk.h"

std::uint32_t major_version(std::uint32_t version = sdk::version()) {
    return version >> 24;
}

std::uint32_t major_version_on_any_thread() {
    return major_version();
}
