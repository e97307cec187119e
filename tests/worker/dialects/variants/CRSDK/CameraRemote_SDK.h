#pragma once

// The SDK's surface with every choice of wording open, for compiling only. The compiler's command
// line says:
//   NUMBERS     how numbers are declared: 0 integers, 1 plain enumerations, 2 scoped enumerations,
//               3 plain enumerations that leave their type to the compiler
//   NUMBER      the integer behind them
//   TEXT        char* or const char*
//   CODES       const, or nothing: whether property codes may be written to
//   CAMERA      const, or nothing: whether a list lends its cameras to be changed
//   OPERATION   const, or nothing: what the operations of cameras and their list promise
//   THROWS      noexcept, or nothing
//   FLAG        what a yes or no is told in: bool, int or an enumeration
//   HANDLE      the type of a handle
//   OUTSIDE     defined: the plain types stand outside the namespace
//   BARE        defined: no default arguments

#if NUMBERS == 0
#define DECLARE(name) using name = NUMBER
#elif NUMBERS == 1
#define DECLARE(name) enum name : NUMBER {}
#elif NUMBERS == 2
#define DECLARE(name) enum class name : NUMBER {}
#else
#define DECLARE(name) enum name { name##_none, name##_all = 0x7FFFFFFF }
#endif

#if defined(BARE)
#define DEFAULT(value)
#else
#define DEFAULT(value) = value
#endif

#if defined(OUTSIDE)
using CrChar = char;
using CrDeviceHandle = HANDLE;
#endif

namespace SCRSDK {

#if !defined(OUTSIDE)
using CrChar = char;
using CrDeviceHandle = HANDLE;
#endif

enum class Answer : short {};

DECLARE(LogLevel);
DECLARE(Version);
DECLARE(Seconds);
DECLARE(Result);
DECLARE(Count);
DECLARE(Index);
DECLARE(FoundCount);
DECLARE(Mode);
DECLARE(Size);
DECLARE(Options);
DECLARE(Value);
DECLARE(CrDataType);
DECLARE(PropertyCode);
DECLARE(CommandNumber);
DECLARE(CommandParameter);
DECLARE(FileNumber);
DECLARE(Reason);
DECLARE(Warning);
DECLARE(Error);
DECLARE(DownloadKind);
enum DeviceConnectionVersioin : int {};

class ICrCameraObjectInfo {
  public:
    virtual TEXT GetModel() OPERATION THROWS = 0;
    virtual TEXT GetConnectionTypeName() OPERATION THROWS = 0;

  protected:
    ~ICrCameraObjectInfo() = default;
};

class ICrEnumCameraObjectInfo {
  public:
    virtual Count GetCount() OPERATION THROWS = 0;
    virtual CAMERA ICrCameraObjectInfo* GetCameraObjectInfo(Index index) OPERATION THROWS = 0;
    virtual FLAG Release() THROWS = 0;

  protected:
    ~ICrEnumCameraObjectInfo() = default;
};

class IDeviceCallback {
  public:
    virtual void OnConnected(DeviceConnectionVersioin) {}
    virtual void OnDisconnected(Reason) {}
    virtual void OnPropertyChangedCodes(Count, CODES PropertyCode*) {}
    virtual void OnCompleteDownload(TEXT, DownloadKind) {}
    virtual void OnNotifyRemoteTransferResult(Count, Count, TEXT) {}
    virtual void OnNotifyRemoteTransferResult(Count, Count, unsigned char*, Size) {}
    virtual void OnWarning(Warning) {}
    virtual void OnError(Error) {}
};

class CrDeviceProperty {
  public:
    CrDeviceProperty();
    ~CrDeviceProperty();
    void SetCode(PropertyCode code) THROWS;
    void SetCurrentValue(Value value) THROWS;
    Value GetCurrentValue() const THROWS;
    void SetValueType(CrDataType type) THROWS;
    FLAG IsGetEnableCurrentValue() const THROWS;
};

FLAG Init(LogLevel level DEFAULT({})) THROWS;
FLAG Release() THROWS;
Version GetSDKVersion() THROWS;
Result EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, Seconds seconds DEFAULT({})) THROWS;
Result Connect(CAMERA ICrCameraObjectInfo* camera, IDeviceCallback* callback,
               CrDeviceHandle* handle, Mode mode DEFAULT({}), Mode reconnecting DEFAULT({}),
               TEXT user DEFAULT({}), TEXT password DEFAULT({}),
               CAMERA unsigned char* fingerprint DEFAULT({}), Size size DEFAULT({}),
               Options options DEFAULT({})) THROWS;
Result Disconnect(CrDeviceHandle handle) THROWS;
Result ReleaseDevice(CrDeviceHandle handle) THROWS;
Result GetSelectDeviceProperties(CrDeviceHandle handle, Count count, CODES PropertyCode* codes,
                                 CrDeviceProperty** properties, FoundCount* found) THROWS;
Result ReleaseDeviceProperties(CrDeviceHandle handle, CrDeviceProperty* properties) THROWS;
Result SetDeviceProperty(CrDeviceHandle handle, CODES CrDeviceProperty* property) THROWS;
Result SendCommand(CrDeviceHandle handle, CommandNumber command,
                   CommandParameter parameter DEFAULT({})) THROWS;
Result SetSaveInfo(CrDeviceHandle handle, TEXT folder, TEXT prefix,
                   FileNumber number DEFAULT({})) THROWS;

}  // namespace SCRSDK
