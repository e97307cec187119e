// Finding, opening and closing cameras.

#include <deque>

#include "tests/worker/dialects/callbacks.h"

namespace {

class Camera final : public SCRSDK::ICrCameraObjectInfo {
  public:
    explicit Camera(virtual_camera::ICrCameraObjectInfo* camera) : camera_(camera) {}

    virtual_camera::ICrCameraObjectInfo* behind() const {
        return camera_;
    }
    SCRSDK::CrInt32u GetNameSize() const noexcept override {
        return 0;
    }
    char* GetModel() override {
        return const_cast<char*>(camera_->GetModel());
    }
    SCRSDK::CrInt32u GetConnectionTypeNameSize() const noexcept override {
        return 0;
    }
    const char* GetConnectionTypeName() const noexcept override {
        return camera_->GetConnectionTypeName();
    }

  private:
    virtual_camera::ICrCameraObjectInfo* camera_;
};

class Cameras final : public SCRSDK::ICrEnumCameraObjectInfo {
  public:
    explicit Cameras(virtual_camera::ICrEnumCameraObjectInfo* cameras) : cameras_(cameras) {}

    SCRSDK::CrInt16u GetCount() override {
        return static_cast<SCRSDK::CrInt16u>(cameras_->GetCount());
    }
    const SCRSDK::ICrCameraObjectInfo* GetCameraObjectInfo(SCRSDK::CrInt16u index) override {
        virtual_camera::ICrCameraObjectInfo* const camera = cameras_->GetCameraObjectInfo(index);
        return camera != nullptr ? &lent_.emplace_back(camera) : nullptr;
    }
    SCRSDK::CrError Release() noexcept override {
        cameras_->Release();
        delete this;
        return SCRSDK::CrError::None;
    }

  private:
    virtual_camera::ICrEnumCameraObjectInfo* cameras_;
    std::deque<Camera> lent_;
};

// Never destroyed: the camera's threads may call back until the process is gone.
std::deque<Callbacks>& callbacks = *new std::deque<Callbacks>;

}  // namespace

namespace SCRSDK {

CrInt32 Init(CrLogLevel level) noexcept {
    return virtual_camera::Init(level);
}

void Release() noexcept {
    virtual_camera::Release();
}

unsigned long GetSDKVersion() noexcept {
    return virtual_camera::GetSDKVersion();
}

CrError EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt16u seconds) {
    virtual_camera::ICrEnumCameraObjectInfo* found = nullptr;
    const unsigned int result =
        virtual_camera::EnumCameraObjects(&found, static_cast<unsigned char>(seconds));
    if (found != nullptr) {
        *cameras = new Cameras(found);
    }
    return as_error(result);
}

CrError Connect(const ICrCameraObjectInfo* camera, IDeviceCallback* callback,
                CrDeviceHandle* handle, CrControlMode mode, CrReconnecting reconnecting, char* user,
                char* password, const CrInt8u* fingerprint, CrInt16u fingerprint_size,
                CrConnectOptions options) {
    long long opened = 0;
    const unsigned int result = virtual_camera::Connect(
        static_cast<const Camera*>(camera)->behind(), &callbacks.emplace_back(callback), &opened,
        mode, static_cast<unsigned int>(reconnecting), user, password,
        reinterpret_cast<const char*>(fingerprint), fingerprint_size,
        static_cast<unsigned long long>(options));
    *handle = static_cast<CrDeviceHandle>(opened);
    return as_error(result);
}

CrError Disconnect(CrDeviceHandle handle) noexcept {
    return as_error(virtual_camera::Disconnect(handle));
}

void ReleaseDevice(CrDeviceHandle handle) noexcept {
    virtual_camera::ReleaseDevice(handle);
}

}  // namespace SCRSDK
