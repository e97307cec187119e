#pragma once

#include <cstdint>

#include "tests/explore/scene.h"
#include "tests/explore/search/findings.h"
#include "tests/explore/worker_library.h"

namespace explore {

// How far to go through the schedules of a scene.
struct Effort {
    int bound;             // of pre-emptions, exhausted
    std::uint64_t random;  // runs with random priorities after that
    std::uint64_t seed;
};

// Goes through the schedules of one scene until one is wrong; that one is then made as short as it
// can be.
void search_scene(const WorkerLibrary& worker, const Scene& scene, const Effort& effort,
                  Findings& findings);

// Plays one recorded schedule, with the faults that stand before it.
void replay_schedule(const WorkerLibrary& worker, const Scene& scene, const char* schedule,
                     Findings& findings);

// Plays random schedules, and each of them again from its record: how many were not the same run
// twice.
int count_unfaithful_replays(const WorkerLibrary& worker, const Scene& scene, int runs);

}  // namespace explore
