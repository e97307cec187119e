#pragma once

// What EnumCameraObjects lends: the cameras as they were when it looked.

#include <optional>
#include <string>
#include <vector>

#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

class CameraObject final : public ICrCameraObjectInfo {
  public:
    CameraObject(std::size_t body, std::optional<std::string> model,
                 std::optional<std::string> connection, bool missing);
    const CrChar* GetModel() const override;
    const CrChar* GetConnectionTypeName() const override;

    std::size_t body;
    bool missing;

  private:
    std::optional<std::string> model_;
    std::optional<std::string> connection_;
};

class CameraList final : public ICrEnumCameraObjectInfo {
  public:
    explicit CameraList(std::vector<CameraObject> cameras);
    CrInt32u GetCount() const override;
    ICrCameraObjectInfo* GetCameraObjectInfo(CrInt32u index) const override;
    void Release() override;

    // The body behind an object of this list; nothing for an object of another.
    std::optional<std::size_t> body_of(const ICrCameraObjectInfo* camera) const;

    CrInt32u claimed_count;  // what GetCount says
    bool handed_back = false;

  private:
    mutable std::vector<CameraObject> cameras_;
};

// Makes a list and lends it. Lists that were handed back are kept for a while, so that a second
// hand-back can be told.
CameraList& lend_list(std::vector<CameraObject> cameras) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
