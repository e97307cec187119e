#pragma once

// What the SDK lends and takes back: lists of cameras and arrays of properties.

#include <optional>
#include <string>
#include <vector>

#include "simulator/sdk/call.h"
#include "simulator/sdk/lock.h"
#include "simulator/sdk/surface.h"

namespace camera_sim {

// EnumCameraObjects: waits, without the lock, while the SDK looks.
CrInt32u look_for_cameras(Hold& hold, Call& call, ICrEnumCameraObjectInfo** cameras,
                          Duration at_most) SIM_REQUIRES(g_lock);

// The body behind a camera object of a list that is lent.
std::optional<std::size_t> body_behind(const ICrCameraObjectInfo* camera) SIM_REQUIRES(g_lock);

CrInt32u lend_properties(Call& call, CrDeviceHandle handle, const std::vector<CrInt32u>& codes,
                         CrDeviceProperty** properties, CrInt32* count) SIM_REQUIRES(g_lock);
CrInt32 lent_count(const CrDeviceProperty* properties) SIM_REQUIRES(g_lock);
void take_back(CrDeviceHandle handle, const CrDeviceProperty* properties) SIM_REQUIRES(g_lock);

void expect_no_array_lent(const std::string& function) SIM_REQUIRES(g_lock);
void expect_nothing_lent(const std::string& function) SIM_REQUIRES(g_lock);

}  // namespace camera_sim
