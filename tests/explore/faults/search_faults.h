#pragma once

#include "tests/explore/scene.h"
#include "tests/explore/search/findings.h"
#include "tests/explore/worker_library.h"

namespace explore {

// Plays a tour with each fault, and with one in so many of their pairs, drawn from the seed.
void search_faults(const WorkerLibrary& worker, const Scene& tour, std::uint64_t one_pair_in,
                   std::uint64_t seed, Findings& findings);

// Plays a scene with the cable pulled at each of its turns.
void search_cable(const WorkerLibrary& worker, const Scene& scene, std::uint64_t seed,
                  Findings& findings);

}  // namespace explore
