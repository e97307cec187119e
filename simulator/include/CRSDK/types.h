#pragma once

// The numbers and texts of the SDK's surface, as the simulated camera provides it.

using CrInt8u = unsigned char;
using CrInt16u = unsigned short;
using CrInt32u = unsigned int;
using CrInt32 = int;
using CrInt64u = unsigned long long;
using CrInt64 = long long;
using CrChar = char;

namespace SCRSDK {

// An open camera; 0 is no camera.
using CrDeviceHandle = CrInt64;

// How a property's value is encoded. The worker always names 2.
enum CrDataType : CrInt32u {
    CrDataType_Undefined = 0,
    CrDataType_UInt = 2,
};

// How the session was opened. The SDK's own name, spelled as it spells it.
enum DeviceConnectionVersioin : CrInt32 {
    DeviceConnectionVersioin_Unknown = 0,
    DeviceConnectionVersioin_2 = 2,
    DeviceConnectionVersioin_3 = 3,
};

}  // namespace SCRSDK
