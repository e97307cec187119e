#pragma once

// The shutter and what follows from it: focus, exposure, the buffer, the card.

#include <string>

#include "simulator/camera/codes.h"
#include "simulator/sdk/lock.h"

namespace camera_sim {

// The shutter button and the pictures in the camera's memory.
struct Shooting {
    bool half_way = false;
    bool down = false;
    bool wanted = false;  // the button went down and its picture is not taken yet
    bool focusing = false;
    bool focused = false;
    unsigned focus_round = 0;  // another one whenever focusing starts or is given up
    unsigned taken = 0;        // since Init
    unsigned under_way = 0;    // from the shutter to the last of their files
    unsigned in_buffer = 0;
    std::string counted_in;  // the folder and prefix whose highest number the counter has passed
};

// One picture, with the settings that were in force when it was taken.
struct Shot {
    unsigned number = 0;  // 1 to 9999
    unsigned passed = 0;  // the body's, and so is the next one, when it was numbered
    unsigned counter_named = 0;
    unsigned taken = 0;  // counts from 0
    CrInt64u type = file_type::jpeg;
    CrInt64u destination = destination::card;
    long long time_seconds = 0;
    int delivering_thread = 0;
};

// The shutter button as the host holds it: half-way, and down. The picture is taken once it is down
// and the camera has focused; a button lifted before that takes none.
void hold_half_way(bool held) SIM_REQUIRES(g_lock);
void hold_down(bool held) SIM_REQUIRES(g_lock);

// The body's own button, pressed and let go when the picture is taken.
void press_shutter() SIM_REQUIRES(g_lock);

// A shot leaves the camera's memory, its files sent or not.
void finish(const Shot& shot, bool stays_on_camera) SIM_REQUIRES(g_lock);

// The session is over: the host's hand is off the shutter.
void let_go() SIM_REQUIRES(g_lock);

bool shots_under_way() SIM_REQUIRES(g_lock);

}  // namespace camera_sim
