// What each problem means, what causes it, and what a photographer can do about it.
// Written by catalogue/generate: change catalogue/problems.json.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "host/values/problem_codes.h"

namespace host {

struct CodeTexts {
    std::string_view meaning;
    std::string_view cause;
    std::string_view advice;
};

// In the order of the enumeration.
inline constexpr std::array<CodeTexts, 29> code_texts{{
    {"The program that drives the camera is not where it should be, or cannot be run.",
     "The application was copied without it, it was moved, or a security program has taken it "
     "away.",
     "Install the application again. If you build it yourself, check the path of the worker."},
    {"The program that drives the camera was started, but did not become ready in time.",
     "A library that it needs is missing, the SDK takes too long to start, or the computer is very "
     "busy.",
     "Restart the computer. If it happens again, install the application again and run tether "
     "doctor."},
    {"The program that drives the camera ended by itself. It is started again.",
     "The camera maker's software inside it crashed, somebody ended it, or the computer ran out of "
     "memory.",
     "Wait a few seconds until the camera is ready again. If it keeps happening, use another "
     "cable and update the camera's firmware."},
    {"The program that drives the camera no longer answers. It is ended and started again.",
     "A call into the camera maker's software does not come back, mostly because of a bad cable or "
     "a camera that has crashed.",
     "Wait until the camera is ready again. If it keeps happening, switch the camera off and on "
     "and use another cable."},
    {"The program that drives the camera writes far too many lines. It is ended and started again.",
     "A loose contact lets the camera come and go many times a second, or the program is not a "
     "worker.",
     "Check the cable at both ends: one that has a loose contact does this. Then switch the "
     "camera off and on."},
    {"The camera maker's software inside the worker could not be started.",
     "Parts of the camera maker's software are missing or do not fit this system.",
     "Restart the computer. If it happens again, install the application again."},
    {"No camera was found on USB.",
     "The camera is off or asleep, its USB mode is not PC Remote, or the cable carries power only.",
     "Check that the camera is switched on, that its USB mode is PC Remote, and that the cable is "
     "in at both ends."},
    {"A camera was found, but it did not answer when it was opened.",
     "The camera shows a menu or an error on its screen, or another session with it was never "
     "closed.",
     "Unplug the camera, switch it off and on, and plug it in again."},
    {"A camera was found, but it could not be opened. Another program may be using it.",
     "Another program has the camera open, such as a photo importer or a second worker.",
     "Close every other program that uses cameras, such as a photo importer, then unplug the "
     "camera and plug it in again."},
    {"The camera went away while it was connected, or was not there when the shutter was to be "
     "fired.",
     "The cable came loose, the battery is empty, or the camera switched itself off.",
     "Check the cable and the camera's battery. The camera is connected again by itself; a "
     "picture that did not come has to be taken again."},
    {"The camera reported an error of its own.",
     "The camera refuses something that it was asked for, or its screen waits for an answer.",
     "Look at the camera's screen. If it shows nothing, switch the camera off and on."},
    {"There is no connected camera, and none is being looked for.",
     "The camera was asked for a shot before it was connected, or after it was given back.",
     "Connect the camera first."},
    {"The camera does not save where it was asked to.",
     "The camera is busy, its mode does not allow the change, or it has no card.",
     "Set the save destination in the camera's own menu, or disconnect and connect again."},
    {"The camera does not shoot the file type that it was asked for.",
     "The camera is busy, or its mode does not allow the change.",
     "Set the file type on the camera itself."},
    {"The folder cannot be used for pictures: the disk, the worker or the camera's software does "
     "not take it.",
     "The path is too long or has characters that one of them cannot handle, or the disk is not "
     "there.",
     "Choose another folder, preferably on this computer's own disk and with a short path."},
    {"The folder for pictures was moved, deleted or ejected, or its disk does not answer.",
     "Somebody moved or deleted the folder, or the disk that it is on was taken out.",
     "Plug the disk in again or put the folder back, or choose another folder."},
    {"The folder for pictures may not be written to.",
     "The folder belongs to another user, or the system protects it until the user has allowed it.",
     "Allow this application to write into the folder, or choose another folder."},
    {"Another program saves pictures of a camera into this folder.",
     "The same program was started twice, or one from before has not ended yet.",
     "Close the other program, or choose another folder."},
    {"Pictures should go to the memory card, but none is in the camera. They come to the computer "
     "only.",
     "The card was taken out, or was never put in.",
     "Put a memory card into the camera, or choose the computer as the only destination."},
    {"The shutter was asked for, but no file came in time.",
     "The camera found no focus, its buffer or card is full, or the shutter did not fire.",
     "Check that the camera can focus and that its card has room, then take the picture again."},
    {"Only one of a RAW and its developed picture came.",
     "The camera sends one of the two only, or the transfer was cut off between them.",
     "Look for the other file on the camera's card. Take the picture again if you need both."},
    {"A file came, but it is not whole. It was kept all the same.",
     "The transfer was cut off, or the disk was full.",
     "Look at the picture. If it is damaged, take it again or copy it from the camera's card."},
    {"A file was reported that is not on the disk.",
     "Another program moved or deleted the file, or it could not be written.",
     "Look for the picture on the camera's card, or take it again."},
    {"A file was reported that lies outside the folder for pictures. It was left alone.",
     "The SDK reported a path of its own, or a name that leads out of the folder.",
     "Choose the folder for pictures again. If it happens again, switch the camera off and on."},
    {"A file could not be moved to its place, or is not a picture. It stays where the text says.",
     "The disk is full or does not answer, the folder may no longer be written to, or the camera's "
     "software delivered a link or a folder.",
     "Check that the disk has room and that the folder can be written to. A picture is moved to "
     "its place at the next start; take anything else from where it is yourself."},
    {"The disk of the folder has room for only a few more pictures.",
     "Pictures or other files have filled the disk.",
     "Delete files that you no longer need, or choose a folder on another disk."},
    {"Too many requests are waiting already.",
     "Shots are asked for faster than the camera takes them.",
     "Wait until the shots before this one are done."},
    {"The request was cancelled, or the session was ended.",
     "The application or its user cancelled it.",
     "Nothing is wrong. Take the picture again if you still want it."},
    {"The shutter could not be fired soon enough, so it was not fired at all.",
     "The shots before it took too long, or the camera was away.",
     "Wait until the camera is ready, then take the picture again."},
}};

constexpr std::string_view meaning(Code code) {
    return code_texts[static_cast<std::size_t>(code)].meaning;
}

constexpr std::string_view cause(Code code) {
    return code_texts[static_cast<std::size_t>(code)].cause;
}

constexpr std::string_view advice(Code code) {
    return code_texts[static_cast<std::size_t>(code)].advice;
}

}  // namespace host
