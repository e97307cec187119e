// What the codes of the SDK mean that a host can meet, as far as they are known.
// Written by catalogue/generate: change catalogue/sdk_codes.json.
#pragma once

#include <array>
#include <string_view>

namespace host {

struct SdkCode {
    std::string_view code;  // as it stands on the wire, "0x00008402"
    std::string_view from;  // "camera", "virtual camera"
    std::string_view meaning;
    std::string_view cause;
    std::string_view advice;
};

inline constexpr std::array<SdkCode, 18> sdk_codes{{
    {"0x00008402", "camera",
     "The camera was too busy to take a setting, although it was asked again for two seconds.",
     "It is still writing pictures to its card or sending them.",
     "Wait until the camera has saved its pictures, then try again."},
    {"0x00008703", "camera",
     "The camera's software could not create its USB adapter, so it sees no camera at all.",
     "The folder CrAdapter of the bundle is missing, or a file in it cannot be loaded.",
     "Install the application again. If you build it yourself, run tether doctor on the bundle."},
    {"0x00020002", "camera", "The camera went away, and its software is trying to bring it back.",
     "The cable was pulled, or the camera was switched off.",
     "Check the cable and the camera's battery, and wait a few seconds."},
    {"0x0002008C", "camera", "The camera shows a caution on its own screen.",
     "The camera has something to tell its user, such as a full card or a lens that is not locked.",
     "Look at the camera's screen."},
    {"0x00005101", "virtual camera",
     "There is no such camera handle: it is 0, was given back, or was never given.",
     "The worker uses a handle that it has given back.",
     "Disconnect and connect again. A worker that causes this has a mistake."},
    {"0x00005102", "virtual camera", "The session with the camera is over.",
     "The camera was unplugged, or closed the session.",
     "Plug the virtual camera in again, or connect again."},
    {"0x00005103", "virtual camera", "The session is not up yet: the camera has not answered.",
     "A call came between Connect and the camera's answer.", "Wait until the camera is connected."},
    {"0x00005104", "virtual camera", "A camera is open already.",
     "The worker connects twice without disconnecting in between.", "Disconnect first."},
    {"0x00005105", "virtual camera", "The camera does not have this property.",
     "The scene does not set it.", "Give it the property with the scene command set."},
    {"0x00005106", "virtual camera", "The property does not take this value, or cannot be changed.",
     "The worker writes a value that this camera does not offer.",
     "Look up the values that the virtual camera knows in docs/simulator.md."},
    {"0x00005107", "virtual camera", "The save destination was set without PC Remote priority.",
     "The camera has not taken PC Remote priority before.",
     "Disconnect and connect again. A worker that causes this has a mistake."},
    {"0x00005108", "virtual camera", "The camera to be opened is unplugged, asleep or taken away.",
     "The scene says so.",
     "Plug the virtual camera in or wake it with the scene commands plug and wake."},
    {"0x00005109", "virtual camera", "The camera does not have this command.",
     "The worker sends a command that this camera does not know.",
     "Disconnect and connect again. A worker that causes this has a mistake."},
    {"0x00005111", "virtual camera", "The cable was pulled.", "The scene command unplug.",
     "Plug the virtual camera in again with the scene command plug."},
    {"0x00025101", "virtual camera", "No picture was taken: the memory card is full.",
     "The scene command card full.", "Put in a card with room, or save to the computer."},
    {"0x00025102", "virtual camera",
     "No picture was taken: the camera is still sending earlier ones.",
     "The buffer of the scene is too small for how fast shots come.",
     "Wait until the earlier pictures have come."},
    {"0x00025103", "virtual camera", "No picture was taken: there is no memory card.",
     "The card is out, and the destination is the card.",
     "Put a memory card in, or save to the computer."},
    {"0x00025104", "virtual camera", "A file was not sent, because the computer could not take it.",
     "The folder is missing, may not be written to, or its disk is full.",
     "Look at what the worker says on standard error: the folder, its permissions or the disk."},
}};

}  // namespace host
