// What the codes of the SDK mean that a host can meet, as far as they are known.
// Written by catalogue/generate: change catalogue/sdk_codes.json.
#pragma once

#include <array>
#include <string_view>

namespace host {

struct SdkCode {
    std::string_view code;  // as it stands on the wire, "0x00008402"
    std::string_view meaning;
    std::string_view advice;
};

inline constexpr std::array<SdkCode, 18> sdk_codes{{
    {"0x00008402",
     "The camera was too busy to take a setting, although it was asked again for two seconds.",
     "Wait until the camera has saved its pictures, then try again."},
    {"0x00008703",
     "The camera's software could not create its USB adapter, so it sees no camera at all.",
     "Install the application again. If you build it yourself, let the doctor look at the bundle."},
    {"0x00020002", "The camera went away, and its software is trying to bring it back.",
     "Check the cable and the camera's battery, and wait a few seconds."},
    {"0x0002008C", "The camera shows a caution on its own screen.", "Look at the camera's screen."},
    {"0x00005101", "There is no such camera handle: it is 0, was given back, or was never given.",
     "Disconnect and connect again. A worker that causes this has a mistake."},
    {"0x00005102", "The session with the camera is over.",
     "Plug the virtual camera in again, or connect again."},
    {"0x00005103", "The session is not up yet: the camera has not answered.",
     "Wait until the camera is connected."},
    {"0x00005104", "A camera is open already.", "Disconnect first."},
    {"0x00005105", "The camera does not have this property.",
     "Give it the property with the scene command set."},
    {"0x00005106", "The property does not take this value, or cannot be changed.",
     "Look up the values that the virtual camera knows in docs/simulator.md."},
    {"0x00005107", "The save destination was set without PC Remote priority.",
     "Disconnect and connect again. A worker that causes this has a mistake."},
    {"0x00005108", "The camera to be opened is unplugged, asleep or taken away.",
     "Plug the virtual camera in or wake it with the scene commands plug and wake."},
    {"0x00005109", "The camera does not have this command.",
     "Disconnect and connect again. A worker that causes this has a mistake."},
    {"0x00005111", "The cable was pulled.",
     "Plug the virtual camera in again with the scene command plug."},
    {"0x00025101", "No picture was taken: the memory card is full.",
     "Put in a card with room, or save to the computer."},
    {"0x00025102", "No picture was taken: the camera still sends the ones before.",
     "Wait until the pictures before are there."},
    {"0x00025103", "No picture was taken: there is no memory card.",
     "Put a memory card in, or save to the computer."},
    {"0x00025104", "A file was not sent, because the computer could not take it.",
     "Look at what the worker says on standard error: the folder, its permissions or the disk."},
}};

}  // namespace host
