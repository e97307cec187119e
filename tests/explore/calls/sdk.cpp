// The SDK's functions around a session, as the worker calls them. Strict: what is called with
// something that was never given, or too often, ends the run.

#pragma GCC visibility push(default)
#include <CRSDK/CameraRemote_SDK.h>
#pragma GCC visibility pop

#include "tests/explore/calls/sdk_call.h"
#include "tests/explore/calls/sdk_cameras.h"
#include "tests/explore/races.h"
#include "tests/explore/scheduler.h"

namespace explore {

namespace {

bool no_callback_running(const Need&) {
    return camera.callbacks_running == 0;
}

}  // namespace

}  // namespace explore

using namespace explore;

namespace SCRSDK {

bool Init(CrInt32u argument) {
    if (argument != 0) {
        complain("Init is called wrongly");
    }
    const Answer answer = begin(Call::init);
    camera.initialised = answer.result == 0;
    end(Call::init, answer.result);
    return answer.result == 0;
}

CrInt32u GetSDKVersion() {
    const Answer answer = begin(Call::get_sdk_version);
    constexpr CrInt32u usual = 0x01020304;
    const CrInt32u version = answer.result != 0 ? answer.result : usual;
    end(Call::get_sdk_version, version);
    return version;
}

CrInt32u Connect(ICrCameraObjectInfo* info, IDeviceCallback* callback, CrDeviceHandle* handle,
                 CrInt32u mode, CrInt32u reconnecting, const CrChar* user, const CrChar* password,
                 const CrChar* fingerprint, CrInt32u fingerprint_size, CrInt64u reserved) {
    if (mode != 0 || reconnecting != 0 || user != nullptr || password != nullptr ||
        fingerprint != nullptr || fingerprint_size != 0 || reserved != 0 || !camera.list_lent ||
        camera.open_handle != 0) {
        complain("Connect is called wrongly");
    }
    const Answer answer = begin(Call::connect, index_of(info));
    if (answer.result == 0 || answer.odd == Odd::lent_on_failure) {
        writes(handle, sizeof *handle, __builtin_return_address(0));
        *handle = answer.odd == Odd::empty ? 0 : ++camera.handles_given;
    }
    if (answer.result == 0) {
        camera.open_handle = static_cast<int>(*handle);
        camera.callback = callback;
        // What the SDK's threads know of the worker's memory they know from here.
        release(object_at(&camera_sessions));
        change(object_at(&camera_sessions));
        camera.connects.push_back(run.self->hash);
        offer();
    }
    end(Call::connect, answer.result, static_cast<std::uint64_t>(camera.open_handle));
    return answer.result;
}

CrInt32u Disconnect(CrDeviceHandle handle) {
    if (handle != camera.open_handle) {
        complain("Disconnect is called for handle %lld", handle);
    }
    const Answer answer = begin(Call::disconnect, 0, 0, 0, handle);
    offer();
    end(Call::disconnect, answer.result);
    return answer.result;
}

// However it answers, the handle counts as given back.
CrInt32u ReleaseDevice(CrDeviceHandle handle) {
    if (handle != camera.open_handle || handle == 0) {
        complain("ReleaseDevice is called for handle %lld", handle);
    }
    const Answer answer = begin(Call::release_device, 0, 0, 0, handle);
    camera.open_handle = 0;
    end(Call::release_device, answer.result);
    return answer.result;
}

CrInt32u SendCommand(CrDeviceHandle handle, CrInt32u command, CrInt16u parameter) {
    const Answer answer = begin(Call::send_command, command, parameter, 0, handle);
    const std::uint32_t result = result_for(answer, handle);
    end(Call::send_command, result);
    return result;
}

CrInt32u SetSaveInfo(CrDeviceHandle handle, CrChar* path, CrChar* prefix, CrInt32 number) {
    if (prefix == nullptr || *prefix != '\0' || number != -1) {
        complain("SetSaveInfo is called wrongly");
    }
    const Answer answer = begin(Call::set_save_info, 0, 0, keep(path), handle);
    const std::uint32_t result = result_for(answer, handle);
    end(Call::set_save_info, result);
    return result;
}

bool Release() {
    if (camera.open_handle != 0 || camera.list_lent || camera.array_lent) {
        complain("the SDK is released while something of it is still held");
    }
    const Answer answer = begin(Call::release);
    camera.released = true;
    change(object_at(&camera_sessions));
    if (camera.release_waits) {
        Need need;
        need.what = "see the last callback return";
        need.met = no_callback_running;
        need.due = never;
        await(need);
        change(object_at(&camera_sessions));
    }
    end(Call::release, answer.result);
    return answer.result == 0;
}

}  // namespace SCRSDK
