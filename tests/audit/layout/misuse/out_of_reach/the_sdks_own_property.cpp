// Its values are lent by the SDK.

#include <cstdint>

#include "session/sdk.h"

#if defined(MISUSE)
std::uint64_t value_of(SCRSDK::CrDeviceProperty& property) {
    return static_cast<std::uint64_t>(property.GetCurrentValue());
}
#endif
