// The list of cameras that the SDK lends.

#include "tests/explore/calls/sdk_cameras.h"

#pragma GCC visibility push(default)
#include <CRSDK/CameraRemote_SDK.h>
#pragma GCC visibility pop

#include <string>

#include "tests/explore/calls/sdk_call.h"
#include "tests/explore/scheduler.h"

namespace explore {

namespace {

void check_lent() {
    if (!camera.list_lent) {
        complain("a list of cameras is read after it was handed back");
    }
}

class ListedCamera final : public SCRSDK::ICrCameraObjectInfo {
  public:
    const CrChar* GetModel() const override {
        check_lent();
        return camera.listed[index_of(this)].model;
    }
    const CrChar* GetConnectionTypeName() const override {
        check_lent();
        return camera.listed[index_of(this)].type;
    }
};

ListedCamera g_cameras[4];  // more than any scene has on its bus

class CameraList final : public SCRSDK::ICrEnumCameraObjectInfo {
  public:
    CrInt32u GetCount() const override {
        check_lent();
        return static_cast<CrInt32u>(camera.listed.size());
    }
    SCRSDK::ICrCameraObjectInfo* GetCameraObjectInfo(CrInt32u index) const override {
        check_lent();
        if (index >= camera.listed.size()) {
            complain("camera %u is asked for in a list of %zu", index, camera.listed.size());
        }
        return camera.listed[index].missing ? nullptr : &g_cameras[index];
    }
    void Release() override {
        if (!camera.list_lent) {
            complain("a list of cameras is handed back twice");
        }
        begin(Call::release_enumeration);
        camera.list_lent = false;
        end(Call::release_enumeration, 0);
    }
};

CameraList g_list;

// "MODEL/TYPE;" for each camera, with "?" where the camera gives nothing, and ";" alone for one
// that is missing.
Text names_of_listed() {
    std::string text;
    for (const CameraOnBus& each : camera.listed) {
        if (!each.missing) {
            text += std::string(each.model != nullptr ? each.model : "?") + "/" +
                    (each.type != nullptr ? each.type : "?");
        }
        text += ";";
    }
    return keep(text);
}

void list_cameras(Odd odd) {
    camera.listed = camera.on_bus;
    if (odd == Odd::empty) {
        camera.listed.clear();
    } else if (odd == Odd::missing_camera) {
        camera.listed.assign({{nullptr, nullptr, true}});
    } else if (odd == Odd::nameless_camera) {
        camera.listed.assign({{nullptr, nullptr}});
    }
}

}  // namespace

std::size_t index_of(const SCRSDK::ICrCameraObjectInfo* info) {
    for (std::size_t i = 0; i < camera.listed.size(); ++i) {
        if (info == &g_cameras[i]) {
            return i;
        }
    }
    complain("a camera is used that is in no list");
}

}  // namespace explore

using namespace explore;

CrInt32u SCRSDK::EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt8u seconds) {
    if (seconds != 3 || camera.list_lent) {
        complain("EnumCameraObjects is called wrongly");
    }
    const Answer answer = begin(Call::enum_camera_objects, seconds);
    const bool lends = answer.result == 0
                           ? answer.odd != Odd::null && ((!camera.on_bus.empty() && !camera.gone) ||
                                                         answer.odd == Odd::empty)
                           : answer.odd == Odd::lent_on_failure;
    if (lends) {
        list_cameras(answer.odd);
        *cameras = &g_list;
        camera.list_lent = true;
    }
    end(Call::enum_camera_objects, answer.result, lends ? camera.listed.size() : 0,
        lends ? names_of_listed() : 0, lends);
    return answer.result;
}
