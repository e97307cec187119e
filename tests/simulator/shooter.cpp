// Another program with a virtual camera: shoots as often as its second argument says into the
// folder that its first one names, prints what was reported, and stays until its standard input
// ends.

#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/simulator/recorder.h"

using namespace SCRSDK;

namespace {

void set(CrDeviceHandle handle, CrInt32u code, CrInt64u value) {
    CrDeviceProperty property;
    property.SetCode(code);
    property.SetCurrentValue(value);
    property.SetValueType(CrDataType_UInt);
    SetDeviceProperty(handle, &property);
}

}  // namespace

int main(int, char** arguments) {
    std::string folder = arguments[1];
    std::string prefix;
    const int shots = std::atoi(arguments[2]);
    Recorder recorder;
    CrDeviceHandle handle = 0;
    ICrEnumCameraObjectInfo* cameras = nullptr;
    if (!Init(0) || EnumCameraObjects(&cameras, 3) != 0 ||
        Connect(cameras->GetCameraObjectInfo(0), &recorder, &handle) != 0 ||
        !recorder.got("OnConnected 3")) {
        return 1;
    }
    cameras->Release();
    SetSaveInfo(handle, folder.data(), prefix.data(), -1);
    set(handle, 0x011A, 2);
    set(handle, 0x0119, 1);
    std::cout << "up\n" << std::flush;
    for (int shot = 0; shot < shots; ++shot) {
        set(handle, 0x0001, 2);
        SendCommand(handle, 0, 1);
        SendCommand(handle, 0, 0);
        set(handle, 0x0001, 1);
        if (!recorder.got("OnCompleteDownload", shot + 1)) {
            return 1;
        }
    }
    for (const std::string& call : recorder.calls()) {
        std::cout << call << '\n';
    }
    std::cout << "done\n" << std::flush;
    std::cin.ignore();
    Disconnect(handle);
    ReleaseDevice(handle);
    Release();
    return 0;
}
