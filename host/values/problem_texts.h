// What each problem means, and what a photographer can do about it.
// Written by catalogue/generate: change catalogue/problems.json.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "host/values/problem_codes.h"

namespace host {

struct CodeTexts {
    std::string_view meaning;
    std::string_view advice;
};

// In the order of the enumeration.
inline constexpr std::array<CodeTexts, 29> code_texts{{
    {"The program that drives the camera is not where it should be, or cannot be run.",
     "Install the application again. If you build it yourself, check the path of the worker."},
    {"The program that drives the camera was started, but did not become ready in time.",
     "Restart the computer. If it happens again, install the application again and let the doctor "
     "look at it."},
    {"The program that drives the camera ended by itself. It is started again.",
     "Wait a few seconds until the camera is ready again. If it keeps happening, use another "
     "cable and update the camera's firmware."},
    {"The program that drives the camera no longer answers. It is ended and started again.",
     "Wait until the camera is ready again. If it keeps happening, switch the camera off and on "
     "and use another cable."},
    {"The program that drives the camera says more than can be made sense of.",
     "Check the cable at both ends: one that has a loose contact does this. Then switch the "
     "camera off and on."},
    {"The camera maker's software inside the worker could not be started.",
     "Restart the computer. If it happens again, install the application again."},
    {"No camera was found on USB.",
     "Check that the camera is switched on, that its USB mode is PC Remote, and that the cable is "
     "in at both ends."},
    {"A camera was found, but it did not answer when it was opened.",
     "Unplug the camera, switch it off and on, and plug it in again."},
    {"A camera was found, but it could not be opened. Another program may be using it.",
     "Close every other program that uses cameras, such as a photo importer, then unplug the "
     "camera and plug it in again."},
    {"The camera went away while it was connected, or was not there when the shutter was to be "
     "fired.",
     "Check the cable and the camera's battery. The camera is connected again by itself; a "
     "picture that did not come has to be taken again."},
    {"The camera reported an error of its own.",
     "Look at the camera's screen. If it shows nothing, switch the camera off and on."},
    {"There is no connected camera, and none is being looked for.", "Connect the camera first."},
    {"The camera does not save where it was asked to.",
     "Set the save destination in the camera's own menu, or disconnect and connect again."},
    {"The camera does not shoot the file type that it was asked for.",
     "Set the file type on the camera itself."},
    {"The folder cannot be used for pictures: the disk, the worker or the camera's software does "
     "not take it.",
     "Choose another folder, best one on this computer's own disk with a short path."},
    {"The folder for pictures was moved, deleted or ejected, or its disk does not answer.",
     "Plug the disk in again or put the folder back, or choose another folder."},
    {"The folder for pictures may not be written to.",
     "Allow this application to write into the folder, or choose another folder."},
    {"Another program saves pictures of a camera into this folder.",
     "Close the other program, or choose another folder."},
    {"Pictures should go to the memory card, but none is in the camera. They come to the computer "
     "only.",
     "Put a memory card into the camera, or choose the computer as the only destination."},
    {"The shutter was asked for, but no file came in time.",
     "Check that the camera can focus and that its card has room, then take the picture again."},
    {"Of a RAW and its developed picture only one came.",
     "Look for the other file on the camera's card. Take the picture again if you need both."},
    {"A file came, but it is not whole. It was kept all the same.",
     "Look at the picture. If it is damaged, take it again or copy it from the camera's card."},
    {"A file was reported that is not on the disk.",
     "Look for the picture on the camera's card, or take it again."},
    {"A file was reported that lies outside the folder for pictures. It was left alone.",
     "Choose the folder for pictures again. If it happens again, switch the camera off and on."},
    {"A file was not brought to its place, or is no picture. It stays where the text says.",
     "Check that the disk has room and that the folder can be written to. A picture is brought in "
     "at the next start; anything else is yours to take from where it is."},
    {"The disk of the folder has room for few more pictures.",
     "Delete files that you no longer need, or choose a folder on another disk."},
    {"Too many requests are waiting already.", "Wait until the shots before this one are done."},
    {"It was given up because somebody asked for that, or because the session was ended.",
     "Nothing is wrong. Take the picture again if you still want it."},
    {"The shutter could not be fired soon enough, so it was not fired at all.",
     "Wait until the camera is ready, then take the picture again."},
}};

constexpr std::string_view meaning(Code code) {
    return code_texts[static_cast<std::size_t>(code)].meaning;
}

constexpr std::string_view advice(Code code) {
    return code_texts[static_cast<std::size_t>(code)].advice;
}

}  // namespace host
