#pragma once

// The surface of the SDK that drives one camera, as the simulated camera provides it. All functions
// are called from one thread, the one that called Init; results are 0 for success unless said
// otherwise.

#include "camera_object.h"
#include "device_callback.h"
#include "device_property.h"
#include "types.h"

#if defined(_WIN32)
#define CR_SDK_API
#else
#define CR_SDK_API __attribute__((visibility("default")))
#endif

namespace SCRSDK {

// Starts the SDK; before every other call. False: it could not be started.
CR_SDK_API bool Init(CrInt32u log_type = 0);

// Ends the SDK. Its threads have stopped calling back when it returns.
CR_SDK_API bool Release();

// Major in bits 31 to 24, minor in 23 to 16, patch in 15 to 8, build in 7 to 0.
CR_SDK_API CrInt32u GetSDKVersion();

// Looks for cameras for `seconds`; lends the list through `cameras`, or leaves it alone when there
// is none.
CR_SDK_API CrInt32u EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt8u seconds = 3);

// Asks for a session. 0: accepted, the handle is written, and the answer comes through `callback`.
CR_SDK_API CrInt32u Connect(ICrCameraObjectInfo* camera, IDeviceCallback* callback,
                            CrDeviceHandle* handle, CrInt32u control_mode = 0,
                            CrInt32u reconnecting = 0, const CrChar* user = nullptr,
                            const CrChar* password = nullptr, const CrChar* fingerprint = nullptr,
                            CrInt32u fingerprint_size = 0, CrInt64u reserved = 0);

// Ends a session that was established. The handle stays taken until ReleaseDevice.
CR_SDK_API CrInt32u Disconnect(CrDeviceHandle handle);

// Gives the handle back.
CR_SDK_API CrInt32u ReleaseDevice(CrDeviceHandle handle);

// Reads properties: lends an array of them, in the order of `codes`. Handed back with
// ReleaseDeviceProperties.
CR_SDK_API CrInt32u GetSelectDeviceProperties(CrDeviceHandle handle, CrInt32u count,
                                              CrInt32u* codes, CrDeviceProperty** properties,
                                              CrInt32* property_count);
CR_SDK_API CrInt32u ReleaseDeviceProperties(CrDeviceHandle handle, CrDeviceProperty* properties);

// Writes one property. 0x8402: the camera is busy, ask again.
CR_SDK_API CrInt32u SetDeviceProperty(CrDeviceHandle handle, CrDeviceProperty* property);

// Command 0 is the shutter release: parameter 1 presses it, 0 lifts it.
CR_SDK_API CrInt32u SendCommand(CrDeviceHandle handle, CrInt32u command, CrInt16u parameter);

// Names the folder for the files that the camera sends, the prefix of their names (empty: the
// camera's own) and the number to count from (-1: the camera's own).
CR_SDK_API CrInt32u SetSaveInfo(CrDeviceHandle handle, CrChar* path, CrChar* prefix,
                                CrInt32 number);

}  // namespace SCRSDK
