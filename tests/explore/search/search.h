#pragma once

#include "tests/explore/model/model.h"
#include "tests/explore/play.h"
#include "tests/explore/search/findings.h"
#include "tests/explore/search/key_table.h"

namespace explore {

// All that a search of one scene needs and counts.
struct Search {
    const WorkerLibrary& worker;
    const Scene& scene;
    Findings& findings;
    model::Model model{scene.arguments};
    KeyTable ends{};

    // Thorough: with a choice at every step.
    Verdict play_once(Choices& choices, bool thorough);
};

// After a run that was wrong: finds the shortest schedule that still is, and notes it with its
// story.
void tell_failure(Search& search, const Schedule& schedule);

}  // namespace explore
