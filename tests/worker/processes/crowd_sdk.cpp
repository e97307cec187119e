// An SDK whose camera is open at once and sends files on eight threads at the same time, as many as
// CROWD_FILES says on each. Everything else it is asked succeeds and does nothing.

#include <CRSDK/CameraRemote_SDK.h>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace SCRSDK {
namespace {

class Camera final : public ICrCameraObjectInfo {
  public:
    const CrChar* GetModel() const override {
        return "CROWD";
    }
    const CrChar* GetConnectionTypeName() const override {
        return "USB";
    }
};

class List final : public ICrEnumCameraObjectInfo {
  public:
    CrInt32u GetCount() const override {
        return 1;
    }
    ICrCameraObjectInfo* GetCameraObjectInfo(CrInt32u) const override {
        return &camera_;
    }
    void Release() override {}

  private:
    mutable Camera camera_;
};

List g_list;
std::vector<std::thread>& g_threads = *new std::vector<std::thread>;

void send_files(IDeviceCallback* application, int thread, int files) {
    for (int number = 0; number < files; ++number) {
        std::string name = std::to_string(thread) + "-" + std::to_string(number) + ".JPG";
        application->OnCompleteDownload(name.data(), 0xFFFFFFFF);
    }
}

}  // namespace

CrDeviceProperty::CrDeviceProperty()
    : code_(0), value_type_(CrDataType_Undefined), value_(0), readable_(false) {}
CrDeviceProperty::~CrDeviceProperty() {}

void CrDeviceProperty::SetCode(CrInt32u code) {
    code_ = code;
}

void CrDeviceProperty::SetCurrentValue(CrInt64u value) {
    value_ = value;
}

CrInt64u CrDeviceProperty::GetCurrentValue() const {
    return value_;
}

void CrDeviceProperty::SetValueType(CrDataType type) {
    value_type_ = type;
}

bool CrDeviceProperty::IsGetEnableCurrentValue() const {
    return readable_;
}

bool Init(CrInt32u) {
    return true;
}

bool Release() {
    for (std::thread& thread : g_threads) {
        thread.join();
    }
    g_threads.clear();
    return true;
}

CrInt32u GetSDKVersion() {
    return 0x01000000;
}

CrInt32u EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt8u) {
    *cameras = &g_list;
    return 0;
}

CrInt32u Connect(ICrCameraObjectInfo*, IDeviceCallback* callback, CrDeviceHandle* handle, CrInt32u,
                 CrInt32u, const CrChar*, const CrChar*, const CrChar*, CrInt32u, CrInt64u) {
    *handle = 1;
    callback->OnConnected(DeviceConnectionVersioin_3);
    const int files = std::atoi(std::getenv("CROWD_FILES"));
    for (int thread = 0; thread < 8; ++thread) {
        g_threads.emplace_back(send_files, callback, thread, files);
    }
    return 0;
}

CrInt32u Disconnect(CrDeviceHandle) {
    return 0;
}

CrInt32u ReleaseDevice(CrDeviceHandle) {
    return 0;
}

CrInt32u GetSelectDeviceProperties(CrDeviceHandle, CrInt32u, CrInt32u*, CrDeviceProperty**,
                                   CrInt32*) {
    return 1;
}

CrInt32u ReleaseDeviceProperties(CrDeviceHandle, CrDeviceProperty*) {
    return 0;
}

CrInt32u SetDeviceProperty(CrDeviceHandle, CrDeviceProperty*) {
    return 0;
}

CrInt32u SendCommand(CrDeviceHandle, CrInt32u, CrInt16u) {
    return 0;
}

CrInt32u SetSaveInfo(CrDeviceHandle, CrChar*, CrChar*, CrInt32) {
    return 0;
}

}  // namespace SCRSDK
