#pragma once

#include <cstdint>

namespace SCRSDK {

using CrInt8u = std::uint8_t;
using CrInt16u = std::uint16_t;
using CrInt32u = std::uint32_t;
using CrInt32 = std::int32_t;
using CrInt64u = std::uint64_t;
using CrInt64 = std::int64_t;
using CrChar = char;

using CrDeviceHandle = long;

// Results of the functions.
enum class CrError : CrInt32u { None = 0, Busy = 0x8402, NoAdapter = 0x8703 };

// What the callbacks are given.
enum class DeviceConnectionVersioin : CrInt32u { unknown, first, second, third };
enum CrDisconnectReason : CrInt32 { CrDisconnectReason_Unknown = 0 };
enum class CrWarning : CrInt32u { Reconnecting = 0x00020002, Caution = 0x0002008C };
enum CrDownloadKind : CrInt32 { CrDownloadKind_Contents = -1 };

// What the functions are given.
enum CrLogLevel { CrLogLevel_None, CrLogLevel_All };
enum CrControlMode : CrInt32u { CrControlMode_Remote, CrControlMode_Transfer };
enum class CrReconnecting : CrInt8u { off, on };
enum class CrConnectOptions : CrInt64u { none };
enum class CrCommand : CrInt16u { Release };
enum class CrCommandParameter : CrInt8u { Up, Down };

enum class CrPropertyCode : CrInt32u {
    HalfPress = 0x0001,
    FileType = 0x0106,
    FirstCard = 0x0708,
    SecondCard = 0x070D
};
enum class CrDataType : CrInt16u { undefined, unsigned_8, unsigned_16 };

}  // namespace SCRSDK
