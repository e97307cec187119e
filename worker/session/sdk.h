#pragma once

#include <CRSDK/CameraRemote_SDK.h>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>

#include "threads/main_thread.h"

// The seam to the camera maker's SDK: the only file that includes its headers or writes a name that
// only they decide. Versions of the headers differ in the types of their parameters: what is an
// integer in one is an enumeration in another, a text is char* or const char*. So each argument is
// passed as an object that takes the type of the parameter it meets, and each result is cast to the
// plain integer that it is.
//
// Nothing leads past it: whatever calls the SDK requires the main thread, constructors and
// destructors included, the SDK's own objects stay private, and its namespace cannot be named after
// this file.

#if defined(__clang__)
// A call inside a class that derives from the SDK's finds these without the namespace.
namespace SCRSDK {
decltype(Init) Init REQUIRES(main_thread);
decltype(GetSDKVersion) GetSDKVersion REQUIRES(main_thread);
decltype(Release) Release REQUIRES(main_thread);
decltype(EnumCameraObjects) EnumCameraObjects REQUIRES(main_thread);
decltype(Connect) Connect REQUIRES(main_thread);
decltype(Disconnect) Disconnect REQUIRES(main_thread);
decltype(ReleaseDevice) ReleaseDevice REQUIRES(main_thread);
decltype(GetSelectDeviceProperties) GetSelectDeviceProperties REQUIRES(main_thread);
decltype(ReleaseDeviceProperties) ReleaseDeviceProperties REQUIRES(main_thread);
decltype(SetDeviceProperty) SetDeviceProperty REQUIRES(main_thread);
decltype(SendCommand) SendCommand REQUIRES(main_thread);
decltype(SetSaveInfo) SetSaveInfo REQUIRES(main_thread);
}  // namespace SCRSDK
#endif

namespace sdk {

namespace headers {

// A number for a parameter of any integer or enumeration type.
struct Number {
    std::uint64_t value;

    template <typename Parameter>
    operator Parameter() const {
        return static_cast<Parameter>(value);
    }
};

// An empty argument: null for a pointer, 0 for anything else.
struct Empty {
    template <typename Parameter>
    operator Parameter() const {
        return Parameter{};
    }
};

// A text for a parameter of type char* or const char*; the SDK gets a copy of its own either way.
struct Text {
    std::string copy;

    operator char*() {
        return copy.data();
    }
};

// The parameter types of a function or of an operation of a class, whether noexcept or not.
template <typename Result, typename... Parameters>
std::tuple<Parameters...> parameters_of(Result (*)(Parameters...));
template <typename Class, typename Result, typename... Parameters>
std::tuple<Parameters...> parameters_of(Result (Class::*)(Parameters...));

template <auto function, std::size_t index>
using Parameter = std::tuple_element_t<index, decltype(parameters_of(function))>;

// What a parameter points to, ready to be written.
template <auto function, std::size_t index>
using Pointee = std::remove_cv_t<std::remove_pointer_t<Parameter<function, index>>>;

}  // namespace headers

using Handle = headers::Pointee<&SCRSDK::Connect, 2>;

// What the callbacks are given, in the types that the headers declare.
using DisconnectReason = headers::Parameter<&SCRSDK::IDeviceCallback::OnDisconnected, 0>;
using WarningCode = headers::Parameter<&SCRSDK::IDeviceCallback::OnWarning, 0>;
using ErrorCode = headers::Parameter<&SCRSDK::IDeviceCallback::OnError, 0>;
using ChangeCount = headers::Parameter<&SCRSDK::IDeviceCallback::OnPropertyChangedCodes, 0>;
using ChangedCodes = headers::Parameter<&SCRSDK::IDeviceCallback::OnPropertyChangedCodes, 1>;
using FileName = headers::Parameter<&SCRSDK::IDeviceCallback::OnCompleteDownload, 0>;
using DownloadType = headers::Parameter<&SCRSDK::IDeviceCallback::OnCompleteDownload, 1>;

// Results of every call.
inline constexpr std::uint32_t ok = 0;
inline constexpr std::uint32_t busy = 0x8402;             // the camera cannot take the write yet
inline constexpr std::uint32_t adapter_missing = 0x8703;  // no USB adapter could be created

inline bool init() REQUIRES(main_thread) {
    return static_cast<bool>(SCRSDK::Init(headers::Number{0}));
}

// Major in bits 31 to 24, minor in 23 to 16, patch in 15 to 8.
inline std::uint32_t version() REQUIRES(main_thread) {
    return static_cast<std::uint32_t>(SCRSDK::GetSDKVersion());
}

inline void release() REQUIRES(main_thread) {
    SCRSDK::Release();
}

// One camera of a CameraList, or none; good for as long as the list.
class Camera {
  public:
    Camera() = default;

    explicit operator bool() const {
        return camera_ != nullptr;
    }

    // Null: the camera gave none.
    const char* model() const REQUIRES(main_thread) {
        return camera_->GetModel();
    }

    // "USB" for a camera on USB; null: the SDK does not know.
    const char* connection_type() const REQUIRES(main_thread) {
        return camera_->GetConnectionTypeName();
    }

    // Asks for a session; when the result is ok the handle is written and the answer comes through
    // the callback.
    std::uint32_t connect(SCRSDK::IDeviceCallback* callback, Handle* handle) const
        REQUIRES(main_thread) {
        using headers::Empty;
        using headers::Number;
        return static_cast<std::uint32_t>(SCRSDK::Connect(camera_, callback, handle, Number{0},
                                                          Number{0}, Empty{}, Empty{}, Empty{},
                                                          Empty{}, Empty{}));
    }

  private:
    friend class CameraList;
    explicit Camera(const SCRSDK::ICrCameraObjectInfo* camera)
        : camera_(const_cast<SCRSDK::ICrCameraObjectInfo*>(camera)) {}

    SCRSDK::ICrCameraObjectInfo* camera_ = nullptr;
};

// The cameras that one enumeration found. The list is the SDK's and is handed back at the latest
// when this object goes; the cameras in it live as long as it. A local variable: of no other object
// does the compiler see where it goes.
class CameraList final {
  public:
    CameraList() REQUIRES(main_thread) {
        constexpr unsigned int wait_for_cameras = 3;
        result_ = static_cast<std::uint32_t>(
            SCRSDK::EnumCameraObjects(&enumeration_, headers::Number{wait_for_cameras}));
    }
    ~CameraList() REQUIRES(main_thread) {
        hand_back();
    }
    CameraList(const CameraList&) = delete;
    CameraList& operator=(const CameraList&) = delete;
    static void* operator new(std::size_t) = delete;

    std::uint32_t result() const {
        return result_;
    }

    // Asked of the SDK each time. 0 when it gave no list.
    std::uint32_t count() const REQUIRES(main_thread) {
        return enumeration_ == nullptr ? 0 : static_cast<std::uint32_t>(enumeration_->GetCount());
    }

    // May be none.
    Camera camera(std::uint32_t index) const REQUIRES(main_thread) {
        return Camera(enumeration_->GetCameraObjectInfo(headers::Number{index}));
    }

    void hand_back() REQUIRES(main_thread) {
        if (enumeration_ != nullptr) {
            enumeration_->Release();
            enumeration_ = nullptr;
        }
    }

  private:
    SCRSDK::ICrEnumCameraObjectInfo* enumeration_ = nullptr;
    std::uint32_t result_ = ok;
};

inline void disconnect(Handle handle) REQUIRES(main_thread) {
    SCRSDK::Disconnect(handle);
}

inline void release_device(Handle handle) REQUIRES(main_thread) {
    SCRSDK::ReleaseDevice(handle);
}

// One property to write; the same object serves every attempt. A local variable, as a CameraList.
class Property final {
  public:
    Property() REQUIRES(main_thread) = default;
    ~Property() REQUIRES(main_thread) = default;
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;
    static void* operator new(std::size_t) = delete;

    void set_code(std::uint32_t code) REQUIRES(main_thread) {
        property_.SetCode(headers::Number{code});
    }
    void set_value(std::uint64_t value) REQUIRES(main_thread) {
        property_.SetCurrentValue(headers::Number{value});
    }
    // The one type that the worker writes, whatever the property.
    void set_value_type() REQUIRES(main_thread) {
        property_.SetValueType(headers::Number{2});
    }
    std::uint32_t write(Handle handle) REQUIRES(main_thread) {
        return static_cast<std::uint32_t>(SCRSDK::SetDeviceProperty(handle, &property_));
    }

  private:
    SCRSDK::CrDeviceProperty property_;
};

// A property's current value, or the fallback when it cannot be read.
inline std::uint64_t read_property(Handle handle, std::uint32_t code, std::uint64_t fallback)
    REQUIRES(main_thread) {
    auto wanted = static_cast<headers::Pointee<&SCRSDK::GetSelectDeviceProperties, 2>>(code);
    headers::Pointee<&SCRSDK::GetSelectDeviceProperties, 4> count{};
    SCRSDK::CrDeviceProperty* properties = nullptr;
    const auto result = static_cast<std::uint32_t>(SCRSDK::GetSelectDeviceProperties(
        handle, headers::Number{1}, &wanted, &properties, &count));
    if (properties == nullptr) {
        return fallback;
    }
    // Lent, and to be handed back, whatever the result says.
    const bool readable = result == ok && static_cast<std::int64_t>(count) > 0 &&
                          static_cast<bool>(properties->IsGetEnableCurrentValue());
    const std::uint64_t value =
        readable ? static_cast<std::uint64_t>(properties->GetCurrentValue()) : fallback;
    SCRSDK::ReleaseDeviceProperties(handle, properties);
    return value;
}

// The shutter release: 1 presses it, 0 lifts it.
inline void send_release_command(Handle handle, std::uint32_t parameter) REQUIRES(main_thread) {
    constexpr std::uint32_t release_command = 0;
    SCRSDK::SendCommand(handle, headers::Number{release_command}, headers::Number{parameter});
}

// The folder for the camera's files, always with an empty prefix and number -1: the camera names
// them.
inline std::uint32_t set_save_info(Handle handle, const std::string& folder) REQUIRES(main_thread) {
    constexpr std::int32_t number = -1;
    return static_cast<std::uint32_t>(
        SCRSDK::SetSaveInfo(handle, headers::Text{folder}, headers::Text{},
                            headers::Number{static_cast<std::uint64_t>(number)}));
}

// The names of the SDK that the other files may write.
namespace fixed_names {
using SCRSDK::DeviceConnectionVersioin;
using SCRSDK::IDeviceCallback;
}  // namespace fixed_names

}  // namespace sdk

// From here on the SDK's namespace holds these two names and no function.
#define SCRSDK sdk::fixed_names
