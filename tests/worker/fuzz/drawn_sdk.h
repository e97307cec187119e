// An SDK that answers every call with what the fuzzer draws, callbacks in the middle of calls
// included, and that minds what it lends. It takes the place of the SDK's library in the program.
#pragma once

#include <cstdint>

#include "tests/worker/fuzz/bytes.h"

namespace drawn_sdk {

// From now on the answers are drawn from here.
void draw_from(Bytes& bytes);

// What the camera does between two calls: nothing, or some callbacks.
void let_the_camera_act();

// How many calls there have been.
unsigned calls();

// Requires that everything lent has been handed back, handles too.
void expect_nothing_out();

}  // namespace drawn_sdk
