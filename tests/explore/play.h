#pragma once

#include <string>

#include "tests/explore/choices.h"
#include "tests/explore/model/model.h"
#include "tests/explore/scene.h"
#include "tests/explore/scheduler.h"
#include "tests/explore/worker_library.h"

namespace explore {

// Pruned: right as far as it went, and stopped where another run had been before.
enum class Verdict { right, wrong, pruned };

// Plays a scene once, from a fresh worker to its end. What went wrong is in run.complaint, what was
// seen in trace.
Verdict play(const WorkerLibrary& worker, const Scene& scene, Choices& choices,
             model::Model& model);

// What was seen in the last run, a line for each event, with the one marked that should not be.
std::string story();

}  // namespace explore
