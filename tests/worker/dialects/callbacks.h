#pragma once

#include "tests/worker/dialects/virtual_camera.h"

// Hands what the virtual camera reports to the application, in this dialect's types.
class Callbacks final : public virtual_camera::IDeviceCallback {
  public:
    explicit Callbacks(SCRSDK::IDeviceCallback* application) : application_(application) {}

    void OnConnected(virtual_camera::DeviceConnectionVersioin version) override {
        application_->OnConnected(static_cast<SCRSDK::DeviceConnectionVersioin>(version));
    }
    void OnDisconnected(unsigned int reason) override {
        application_->OnDisconnected(static_cast<SCRSDK::CrDisconnectReason>(reason));
    }
    void OnPropertyChangedCodes(unsigned int count, unsigned int* codes) override {
        application_->OnPropertyChangedCodes(
            static_cast<SCRSDK::CrInt16u>(count),
            reinterpret_cast<const SCRSDK::CrPropertyCode*>(codes));
    }
    void OnCompleteDownload(char* name, unsigned int kind) override {
        application_->OnCompleteDownload(name, static_cast<SCRSDK::CrDownloadKind>(kind));
    }
    void OnWarning(unsigned int warning) override {
        application_->OnWarning(static_cast<SCRSDK::CrWarning>(warning));
    }
    void OnError(unsigned int error) override {
        application_->OnError(static_cast<SCRSDK::CrError>(error));
    }

  private:
    SCRSDK::IDeviceCallback* application_;
};
