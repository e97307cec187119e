#pragma once

// The SDK's surface as another version of its headers might word it: enumerations where the
// simulated SDK has integers, other widths and signs, const where that has none and the other way
// round.

#include "CRSDK/callback.h"
#include "CRSDK/cameras.h"
#include "CRSDK/numbers.h"
#include "CRSDK/property.h"

#define CR_SDK_API __attribute__((visibility("default")))

namespace SCRSDK {

CR_SDK_API CrInt32 Init(CrLogLevel level) noexcept;
CR_SDK_API void Release() noexcept;
CR_SDK_API unsigned long GetSDKVersion() noexcept;

CR_SDK_API CrError EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt16u seconds);

CR_SDK_API CrError Connect(const ICrCameraObjectInfo* camera, IDeviceCallback* callback,
                           CrDeviceHandle* handle, CrControlMode mode = CrControlMode_Remote,
                           CrReconnecting reconnecting = CrReconnecting::off, char* user = nullptr,
                           char* password = nullptr, const CrInt8u* fingerprint = nullptr,
                           CrInt16u fingerprint_size = 0,
                           CrConnectOptions options = CrConnectOptions::none);
CR_SDK_API CrError Disconnect(CrDeviceHandle handle) noexcept;
CR_SDK_API void ReleaseDevice(CrDeviceHandle handle) noexcept;

CR_SDK_API CrError GetSelectDeviceProperties(CrDeviceHandle handle, CrInt16u count,
                                             const CrPropertyCode* codes,
                                             CrDeviceProperty** properties, CrInt64* found);
CR_SDK_API void ReleaseDeviceProperties(CrDeviceHandle handle, const CrDeviceProperty* properties);
CR_SDK_API CrError SetDeviceProperty(CrDeviceHandle handle, const CrDeviceProperty* property);

CR_SDK_API CrError SendCommand(CrDeviceHandle handle, CrCommand command,
                               CrCommandParameter parameter = CrCommandParameter::Up);

CR_SDK_API CrError SetSaveInfo(CrDeviceHandle handle, const CrChar* folder, const CrChar* prefix,
                               CrInt64 number = -1);

}  // namespace SCRSDK
