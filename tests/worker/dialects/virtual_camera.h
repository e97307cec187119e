#pragma once

// The simulated SDK under another name, so that one library can hold two surfaces that are both
// called SCRSDK.
#define SCRSDK virtual_camera
#include "simulator/include/CRSDK/CameraRemote_SDK.h"
#undef SCRSDK

#include "tests/worker/dialects/app/CRSDK/CameraRemote_SDK.h"

inline SCRSDK::CrError as_error(unsigned int result) {
    return static_cast<SCRSDK::CrError>(result);
}
