#pragma once

// The SDK's headers, with their types visible outside this library: the application derives from
// them, and run-time type checks compare their addresses. Everything else here is hidden.
#pragma GCC visibility push(default)
#include "CRSDK/CameraRemote_SDK.h"
#pragma GCC visibility pop

namespace camera_sim {
using namespace SCRSDK;
}
