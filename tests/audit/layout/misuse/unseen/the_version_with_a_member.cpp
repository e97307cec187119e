#include <cstdint>

#include "session/sdk.h"

struct About {
    std::uint32_t version = sdk::version();
};

std::uint32_t version_on_any_thread() {
    return About().version;
}
