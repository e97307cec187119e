#include <cstdint>

#include "session/sdk.h"

extern const std::uint32_t version;
const std::uint32_t version = sdk::version();
