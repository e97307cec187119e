// Everything that can go wrong with the virtual camera, one at a time: what a shoot loses by it,
// and what it says.
#pragma once

#include <string>
#include <vector>

// The camera is told these lines once one with that text has been printed, and its `state` has that
// line: what the worker says before it calls the SDK is no sign that the call has come.
struct Moment {
    const char* after;
    const char* told;
    const char* state = nullptr;
};

struct Fact {
    const char* name;  // of the test
    const char* form;  // as the tables of docs/simulator.md write it, one alternative of it; ";"
                       // between several
    const char* scene;
    std::vector<Moment> moments{};
    std::vector<const char*> options{};  // of tether shoot, beside those of every one
    int status = 0;
    const char* brought = "1 shot, 1 file";
    const char* lost = "nothing lost";
    std::vector<const char*> said{};  // the lines behind "! ", all of them
    bool in_any_order = false;        // several threads have caused them
};

// The time that a shoot has for the camera and for the files of a shot, where the fact names none;
// and what the scenes begin with.
inline const std::vector<const char*> usual_options{"--wait", "20", "--patience", "5"};
inline constexpr const char* usual_scene =
    "timing instant\npicture 320x240\ncamera \"MODEL-A\" over USB, card in\n";

extern const std::vector<Fact> facts;
