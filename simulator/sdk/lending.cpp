#include "simulator/sdk/lending.h"

#include <algorithm>

#include "simulator/camera/session.h"
#include "simulator/camera/state.h"
#include "simulator/sdk/camera_list.h"
#include "simulator/sdk/strictness.h"
#include "simulator/sdk/text.h"

namespace camera_sim {
namespace {

std::vector<CameraObject> cameras_in_reach() SIM_REQUIRES(g_lock) {
    std::vector<CameraObject> cameras;
    const auto& bodies = state().bodies;
    for (std::size_t index = 0; index < bodies.size(); ++index) {
        if (bodies[index].reachable()) {
            cameras.emplace_back(index, bodies[index].model, bodies[index].connection,
                                 bodies[index].missing);
        }
    }
    return cameras;
}

CrDeviceProperty read_property(CrInt32u code, const Response& fault) SIM_REQUIRES(g_lock) {
    const auto& properties = body().properties;
    const auto found = properties.find(code);
    const Property property = found == properties.end() ? Property{} : found->second;
    CrDeviceProperty read;
    read.SetCode(code);
    read.SetValueType(CrDataType_UInt);
    read.SetCurrentValue(fault.gives.value_or(property.value));
    read.SetGetEnableCurrentValue(fault.gives || (property.readable && !fault.gives_unreadable));
    return read;
}

}  // namespace

CrInt32u look_for_cameras(Hold& hold, Call& call, ICrEnumCameraObjectInfo** cameras,
                          Duration at_most) {
    const Response& fault = call.fault();
    if (call.refused() && !fault.lends) {
        return call.answer(result::ok);
    }
    hold.sleep(std::min(state().setup.looking, at_most));
    std::vector<CameraObject> found = cameras_in_reach();
    if (fault.gives_nothing) {
        found.clear();
    } else if (fault.gives_null || (found.empty() && !fault.lends)) {
        return call.answer(result::ok, "null");
    }
    CameraList& list = lend_list(std::move(found));
    if (fault.gives) {
        list.claimed_count = static_cast<CrInt32u>(*fault.gives);
    }
    *cameras = &list;
    return call.answer(result::ok, std::to_string(list.claimed_count) +
                                       (list.claimed_count == 1 ? " camera" : " cameras"));
}

std::optional<std::size_t> body_behind(const ICrCameraObjectInfo* camera) {
    for (const CameraList* list : state().lent_lists) {
        if (const auto body = list->body_of(camera)) {
            return body;
        }
    }
    return std::nullopt;
}

CrInt32u lend_properties(Call& call, CrDeviceHandle handle, const std::vector<CrInt32u>& codes,
                         CrDeviceProperty** properties, CrInt32* count) {
    const Response& fault = call.fault();
    if (call.refused() && !fault.lends) {
        return call.answer(result::ok);
    }
    if (const CrInt32u result = judge_handle(handle); result != result::ok) {
        return call.answer(result);
    }
    for (const CrInt32u code : codes) {
        if (body().properties.count(code) == 0 && !fault.gives) {
            return call.answer(result::no_such_property);
        }
    }
    if (fault.gives_null) {
        *properties = nullptr;
        *count = static_cast<CrInt32>(codes.size());
        return call.answer(result::ok, "null");
    }
    LentArray array{handle, std::make_unique<CrDeviceProperty[]>(codes.size()), 0};
    std::string values;
    for (std::size_t index = 0; index < codes.size(); ++index) {
        CrDeviceProperty& property = array.properties[index] = read_property(codes[index], fault);
        values += (index == 0 ? "" : " ") + (property.IsGetEnableCurrentValue()
                                                 ? std::to_string(property.GetCurrentValue())
                                                 : "unreadable");
        ++array.count;
    }
    if (fault.gives_nothing) {
        // The values stay in place: an application that ignores the count reads them.
        array.count = 0;
        values = "nothing";
    }
    *properties = array.properties.get();
    *count = array.count;
    state().lent_arrays.emplace(*properties, std::move(array));
    return call.answer(result::ok, values);
}

CrInt32 lent_count(const CrDeviceProperty* properties) {
    const auto found = state().lent_arrays.find(properties);
    return found == state().lent_arrays.end() ? 0 : found->second.count;
}

void take_back(CrDeviceHandle handle, const CrDeviceProperty* properties) {
    const auto found = state().lent_arrays.find(properties);
    if (properties == nullptr || found == state().lent_arrays.end()) {
        stop(
            "ReleaseDeviceProperties was given an array that is not lent: it was handed back "
            "before, "
            "or never lent");
    }
    if (found->second.handle != handle) {
        stop("ReleaseDeviceProperties was given handle " + std::to_string(handle) +
             " for an array that handle " + std::to_string(found->second.handle) + " lent");
    }
    state().lent_arrays.erase(found);
}

void expect_no_array_lent(const std::string& function) {
    if (!state().lent_arrays.empty()) {
        stop(function + " was called while " + std::to_string(state().lent_arrays.size()) +
             " array(s) of properties had not been handed back");
    }
}

void expect_nothing_lent(const std::string& function) {
    expect_no_array_lent(function);
    if (!state().lent_lists.empty()) {
        stop(function + " was called while " + std::to_string(state().lent_lists.size()) +
             " list(s) of cameras had not been handed back");
    }
    if (state().session.handle != 0) {
        stop(function + " was called while handle " + std::to_string(state().session.handle) +
             " had not been given back");
    }
}

}  // namespace camera_sim
