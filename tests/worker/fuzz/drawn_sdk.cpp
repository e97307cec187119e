#include "tests/worker/fuzz/drawn_sdk.h"

#include <CRSDK/CameraRemote_SDK.h>
#include <algorithm>
#include <iterator>
#include <set>

#include "tests/worker/fuzz/drawn_camera.h"
#include "tests/worker/fuzz/require.h"

namespace {

using namespace SCRSDK;

struct Sdk {
    Bytes* bytes = nullptr;
    unsigned calls = 0;
    IDeviceCallback* application = nullptr;
    std::set<CrDeviceHandle> handles;  // given and not given back
    std::set<const DrawnList*> lists;
    std::set<const CrDeviceProperty*> arrays;
};
Sdk& g_sdk = *new Sdk;

Bytes& begin_call() {
    ++g_sdk.calls;
    drawn_sdk::let_the_camera_act();
    return *g_sdk.bytes;
}

// The handle may be 0, or one whose camera is gone, but never one that was given back.
void expect_handle(CrDeviceHandle handle) {
    require(handle == 0 || g_sdk.handles.count(handle) == 1,
            "a handle in use is one that was given");
}

CrInt32u drawn_result(Bytes& bytes) {
    return bytes.yes() ? 0 : bytes.code();
}

}  // namespace

namespace drawn_sdk {

void draw_from(Bytes& bytes) {
    g_sdk = Sdk{};
    g_sdk.bytes = &bytes;
}

void let_the_camera_act() {
    if (g_sdk.application != nullptr && g_sdk.bytes->number(3) == 1) {
        call_back(*g_sdk.application, *g_sdk.bytes);
    }
}

unsigned calls() {
    return g_sdk.calls;
}

void expect_nothing_out() {
    require(g_sdk.lists.empty(), "every list of cameras is handed back");
    require(g_sdk.arrays.empty(), "every array of properties is handed back");
    require(g_sdk.handles.empty(), "every handle is given back");
}

}  // namespace drawn_sdk

namespace SCRSDK {

bool Init(CrInt32u) {
    return true;
}

bool Release() {
    begin_call();
    drawn_sdk::expect_nothing_out();
    return true;
}

CrInt32u GetSDKVersion() {
    return begin_call().code();
}

CrInt32u EnumCameraObjects(ICrEnumCameraObjectInfo** cameras, CrInt8u) {
    Bytes& bytes = begin_call();
    if (bytes.number(7) != 0) {
        *cameras = new DrawnList(bytes, g_sdk.lists);
    }
    return drawn_result(bytes);
}

CrInt32u Connect(ICrCameraObjectInfo* camera, IDeviceCallback* callback, CrDeviceHandle* handle,
                 CrInt32u, CrInt32u, const CrChar*, const CrChar*, const CrChar*, CrInt32u,
                 CrInt64u) {
    require(camera != nullptr && callback != nullptr,
            "Connect is given a camera and a callback object");
    require(g_sdk.handles.empty(), "one camera is open at a time");
    g_sdk.application = callback;
    Bytes& bytes = begin_call();
    const CrInt32u result = drawn_result(bytes);
    *handle = bytes.number(7);
    if (result == 0 && *handle != 0) {
        g_sdk.handles.insert(*handle);
    }
    drawn_sdk::let_the_camera_act();
    return result;
}

CrInt32u Disconnect(CrDeviceHandle handle) {
    require(g_sdk.handles.count(handle) == 1, "only an open camera is disconnected");
    return begin_call().code();
}

CrInt32u ReleaseDevice(CrDeviceHandle handle) {
    require(g_sdk.handles.erase(handle) == 1, "a handle is given back once");
    require(g_sdk.arrays.empty(), "a handle's arrays are handed back before it");
    return begin_call().code();
}

CrInt32u GetSelectDeviceProperties(CrDeviceHandle handle, CrInt32u count, CrInt32u* codes,
                                   CrDeviceProperty** properties, CrInt32* property_count) {
    expect_handle(handle);
    require(count == 1 && *codes != 0, "one property is read at a time");
    Bytes& bytes = begin_call();
    if (bytes.number(7) != 0) {
        auto* const property = new CrDeviceProperty[1];
        property->SetCode(*codes);
        property->SetCurrentValue(bytes.yes() ? bytes.code() : bytes.number(5));
        property->SetGetEnableCurrentValue(bytes.number(7) != 1);
        *properties = property;
        g_sdk.arrays.insert(property);
    }
    *property_count = bytes.number(3) != 3 ? 1 : static_cast<CrInt32>(bytes.code());
    return drawn_result(bytes);
}

CrInt32u ReleaseDeviceProperties(CrDeviceHandle handle, CrDeviceProperty* properties) {
    expect_handle(handle);
    require(g_sdk.arrays.erase(properties) == 1, "an array is handed back once");
    delete[] properties;
    return begin_call().code();
}

CrInt32u SetDeviceProperty(CrDeviceHandle handle, CrDeviceProperty* property) {
    static constexpr CrInt32u written[] = {0x0001, 0x0106, 0x0119, 0x011A, 0x0507};
    expect_handle(handle);
    require(
        std::find(std::begin(written), std::end(written), property->GetCode()) != std::end(written),
        "only properties that the worker knows are written");
    require(property->GetValueType() == CrDataType_UInt, "a value is written as type 2");
    require(property->GetCurrentValue() <= 3, "only values that the worker knows are written");
    Bytes& bytes = begin_call();
    return bytes.yes() ? drawn_result(bytes) : 0x8402;
}

CrInt32u SendCommand(CrDeviceHandle handle, CrInt32u command, CrInt16u parameter) {
    expect_handle(handle);
    require(command == 0 && parameter <= 1, "the shutter is all that is commanded");
    return begin_call().code();
}

CrInt32u SetSaveInfo(CrDeviceHandle handle, CrChar* path, CrChar* prefix, CrInt32 number) {
    expect_handle(handle);
    require(path != nullptr && *path != '\0', "the folder has a name");
    require(prefix != nullptr && *prefix == '\0' && number == -1,
            "the files have the camera's names");
    return drawn_result(begin_call());
}

}  // namespace SCRSDK
