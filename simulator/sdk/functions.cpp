// The functions of the SDK. Each is a Call: judged, journaled and spoiled there; what it means for
// the camera is in the file of its subject.

#include "simulator/camera/codes.h"
#include "simulator/camera/session.h"
#include "simulator/camera/shots.h"
#include "simulator/camera/state.h"
#include "simulator/sdk/call.h"
#include "simulator/sdk/camera_list.h"
#include "simulator/sdk/lending.h"
#include "simulator/sdk/start.h"
#include "simulator/sdk/strictness.h"
#include "simulator/sdk/text.h"

namespace camera_sim {
namespace {

// Names the handle in the journal when it is not the one in use.
std::string on_handle(CrDeviceHandle handle) SIM_REQUIRES(g_lock) {
    return handle == state().session.handle ? "" : " on handle " + std::to_string(handle);
}

std::string text_or_null(const CrChar* text) {
    return text != nullptr ? in_quotes(text) : "null";
}

}  // namespace
}  // namespace camera_sim

using namespace camera_sim;

namespace SCRSDK {

bool Init(CrInt32u log_type) {
    Hold hold;
    return start(hold, log_type);
}

bool Release() {
    Hold hold;
    Call call(hold, "Release");
    end(hold);
    const bool answer = call.answer_bool(true);
    ended();
    return answer;
}

CrInt32u GetSDKVersion() {
    Hold hold;
    Call call(hold, "GetSDKVersion");
    return call.answer(state().setup.version);
}

CrInt32u EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt8u seconds) {
    Hold hold;
    Call call(hold, "EnumCameraObjects", std::to_string(seconds));
    if (cameras == nullptr) {
        stop("EnumCameraObjects was given no place for the list");
    }
    return look_for_cameras(hold, call, cameras, std::chrono::seconds(seconds));
}

CrInt32u Connect(ICrCameraObjectInfo* camera, IDeviceCallback* callback, CrDeviceHandle* handle,
                 CrInt32u control_mode, CrInt32u reconnecting, const CrChar* user,
                 const CrChar* password, const CrChar* fingerprint, CrInt32u fingerprint_size,
                 CrInt64u reserved) {
    Hold hold;
    const std::optional<std::size_t> found = body_behind(camera);
    const std::string name = !found ? "null" : text_or_null(camera->GetModel());
    Call call(hold, "Connect",
              name + " " + std::to_string(control_mode) + " " + std::to_string(reconnecting) + " " +
                  text_or_null(user) + " " + text_or_null(password) + " " +
                  text_or_null(fingerprint) + " " + std::to_string(fingerprint_size) + " " +
                  std::to_string(reserved));
    if (callback == nullptr || handle == nullptr) {
        stop(callback == nullptr ? "Connect was given no callback object"
                                 : "Connect was given no place for the handle");
    }
    if (camera != nullptr && !found) {
        stop("Connect was given a camera whose list was handed back already");
    }
    if (call.refused()) {
        return call.answer(result::ok);
    }
    const auto& bodies = state().bodies;  // the scene may have taken some away meanwhile
    if (!found || *found >= bodies.size() || !bodies[*found].reachable()) {
        return call.answer(result::camera_not_there);
    }
    if (state().session.handle != 0) {
        return call.answer(result::session_taken);
    }
    open_session(hold, *found, callback, handle);
    return call.answer(result::ok);
}

CrInt32u Disconnect(CrDeviceHandle handle) {
    Hold hold;
    Call call(hold, "Disconnect", std::to_string(handle));
    const CrInt32u result = judge_handle(handle);
    if (result == result::ok) {
        happen(Happening::disconnected);
    }
    return call.answer(result);
}

CrInt32u ReleaseDevice(CrDeviceHandle handle) {
    Hold hold;
    Call call(hold, "ReleaseDevice", std::to_string(handle));
    if (handle == 0 || handle != state().session.handle) {
        return call.answer(result::no_such_handle);
    }
    expect_no_array_lent("ReleaseDevice");
    happen(Happening::handed_back);
    return call.answer(result::ok);
}

CrInt32u GetSelectDeviceProperties(CrDeviceHandle handle, CrInt32u count, CrInt32u* codes,
                                   CrDeviceProperty** properties, CrInt32* property_count) {
    Hold hold;
    if (count == 0 || codes == nullptr) {
        expect_thread("GetSelectDeviceProperties");
        stop("GetSelectDeviceProperties was given no codes");
    }
    if (properties == nullptr || property_count == nullptr) {
        expect_thread("GetSelectDeviceProperties");
        stop("GetSelectDeviceProperties was given no place for the properties");
    }
    std::string list;
    for (CrInt32u index = 0; index < count; ++index) {
        list += (index == 0 ? "" : " ") + hex(codes[index], 4);
    }
    Call call(hold, "GetSelectDeviceProperties", list + on_handle(handle), codes[0]);
    return lend_properties(call, handle, {codes, codes + count}, properties, property_count);
}

CrInt32u ReleaseDeviceProperties(CrDeviceHandle handle, CrDeviceProperty* properties) {
    Hold hold;
    Call call(hold, "ReleaseDeviceProperties",
              std::to_string(lent_count(properties)) + on_handle(handle));
    take_back(handle, properties);
    return call.answer(result::ok);
}

CrInt32u SetDeviceProperty(CrDeviceHandle handle, CrDeviceProperty* property) {
    Hold hold;
    if (property == nullptr) {
        expect_thread("SetDeviceProperty");
        stop("SetDeviceProperty was given no property");
    }
    const CrInt32u code = property->GetCode();
    const CrInt64u value = property->GetCurrentValue();
    const CrInt32u type = property->GetValueType();
    Call call(hold, "SetDeviceProperty",
              hex(code, 4) + " " + std::to_string(value) +
                  (type == CrDataType_UInt ? "" : " type " + std::to_string(type)) +
                  on_handle(handle),
              code);
    if (call.refused()) {
        return call.answer(result::ok);
    }
    CrInt32u result = judge_handle(handle);
    if (result == result::ok && Clock::now() < state().busy_until) {
        result = result::busy;
    }
    if (result == result::ok) {
        result = body().judge_write(code, value, type);
    }
    if (result == result::ok) {
        report_change(body().put(code, value));
        if (code == property::half_press) {
            hold_half_way(value == half_press::pressed);
        }
    }
    return call.answer(result);
}

CrInt32u SendCommand(CrDeviceHandle handle, CrInt32u command, CrInt16u parameter) {
    Hold hold;
    Call call(hold, "SendCommand",
              std::to_string(command) + " " + std::to_string(parameter) + on_handle(handle),
              command);
    if (call.refused()) {
        return call.answer(result::ok);
    }
    CrInt32u result = judge_handle(handle);
    if (result == result::ok && (command != 0 || parameter > 1)) {
        result = result::no_such_command;
    }
    if (result == result::ok) {
        hold_down(parameter == 1);
    }
    return call.answer(result);
}

CrInt32u SetSaveInfo(CrDeviceHandle handle, CrChar* path, CrChar* prefix, CrInt32 number) {
    Hold hold;
    Call call(hold, "SetSaveInfo",
              text_or_null(path) + " " + text_or_null(prefix) + " " + std::to_string(number) +
                  on_handle(handle));
    if (path == nullptr || prefix == nullptr) {
        stop(path == nullptr ? "SetSaveInfo was given no path" : "SetSaveInfo was given no prefix");
    }
    if (call.refused()) {
        return call.answer(result::ok);
    }
    const CrInt32u result = judge_handle(handle);
    if (result == result::ok) {
        state().session.folder = path;
        state().session.prefix = prefix;
        state().session.number = number;
    }
    return call.answer(result);
}

}  // namespace SCRSDK
