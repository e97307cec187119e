#pragma once

#include <vector>

#include "tests/explore/scene.h"

namespace explore {

// What a host does with the worker when the SDK begins to fail in each of the four states of the
// session.
const std::vector<const Scene*>& fault_tours();

// One shot, with the cable pulled at circumstances.cable_pulled_at and told in different ways.
const std::vector<const Scene*>& cable_scenes();

}  // namespace explore
