// What chance alone brings together too seldom: a few events that belong to each other.
#pragma once

#include <vector>

#include "tests/host/afternoons/dice.h"
#include "tests/host/afternoons/story.h"

namespace afternoons {

// One of the situations, with times and numbers of its own, and now and then without one of its
// events.
std::vector<Event> draw_situation(Dice& dice);

}  // namespace afternoons
