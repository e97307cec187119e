// The cameras that an SDK drawn by the fuzzer shows, and what they call back.
#pragma once

#include <CRSDK/CameraRemote_SDK.h>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/worker/fuzz/bytes.h"

class DrawnCamera final : public SCRSDK::ICrCameraObjectInfo {
  public:
    explicit DrawnCamera(Bytes& bytes);
    const CrChar* GetModel() const override;
    const CrChar* GetConnectionTypeName() const override;

  private:
    std::optional<std::string> model_;
    std::optional<std::string> type_;
};

// What it says it holds and what it holds may differ; beyond the end is a null object. It stands in
// `lent` until it is handed back.
class DrawnList final : public SCRSDK::ICrEnumCameraObjectInfo {
  public:
    DrawnList(Bytes& bytes, std::set<const DrawnList*>& lent);
    CrInt32u GetCount() const override;
    SCRSDK::ICrCameraObjectInfo* GetCameraObjectInfo(CrInt32u index) const override;
    void Release() override;

  private:
    ~DrawnList() = default;
    std::set<const DrawnList*>& lent_;
    CrInt32u count_;
    std::vector<std::unique_ptr<DrawnCamera>> cameras_;
};

// One callback, with whatever it may tell.
void call_back(SCRSDK::IDeviceCallback& application, Bytes& bytes);
