#include "tests/host/afternoons/situations.h"

#include <array>

namespace afternoons {
namespace {

// One event of a situation. Its number is one of several in a row, and so is the time before it.
struct Step {
    int soonest;  // milliseconds after the one before
    int latest;
    What what;
    int first = 0;
    int forms = 1;
};

using Situation = std::vector<Step>;

const std::array<Situation, 9> situations{{
    // A camera whose name looks like lines of the worker, found again and again.
    {{0, 3000, What::named, 1, 8},
     {0, 500, What::unplug},
     {0, 3000, What::plug},
     {0, 9000, What::disconnect},
     {0, 3000, What::connect}},
    // Nobody can read what came of a type that was asked for.
    {{2500, 3000, What::type, 2},
     {500, 5000, What::unreadable, 1},
     {0, 1000, What::type, 0, 3},
     {3000, 9000, What::readable}},
    // Shots that wait for a camera which comes back when their time is over.
    {{2500, 3000, What::unplug_reconnecting},
     {0, 1000, What::capture_soon, 0, 3},
     {0, 1000, What::capture_soon, 0, 3},
     {500, 3500, What::plug}},
    // Shots whose time is over while this process stands still.
    {{2500, 3000, What::capture},
     {0, 700, What::capture_soon, 0, 3},
     {0, 700, What::cancel, 0, 2},
     {0, 20, What::brain_stops, 1, 3}},
    // Another camera, which gives the names of the first one's halves.
    {{2500, 3000, What::dial, 2},
     {0, 1500, What::pair_half},
     {0, 10, What::capture, 0, 3},
     {800, 4000, What::swap},
     {3000, 9000, What::pair_half},
     {0, 10, What::pair_reversed},
     {0, 3000, What::capture, 0, 3}},
    // A loss between the halves of what may be a late pair.
    {{2500, 3000, What::type, 2},
     {800, 1500, What::capture, 5},
     {1000, 3000, What::capture, 0, 2},
     {700, 1200, What::disconnected},
     {0, 3000, What::capture, 0, 2}},
    // Workers that are lost one after the other.
    {{500, 3000, What::worker_dies, 0, 3},
     {500, 9000, What::worker_dies, 0, 3},
     {500, 9000, What::worker_dies, 0, 3},
     {500, 9000, What::worker_dies, 0, 3},
     {500, 9000, What::worker_dies, 0, 3},
     {500, 9000, What::worker_dies, 0, 3},
     {500, 9000, What::worker_dies, 0, 3}},
    // A late file, right before the next shot's own.
    {{2500, 3000, What::file_late, 2},
     {0, 10, What::capture, 1},
     {8000, 8300, What::capture, 0, 3}},
    // A disk that does not take a shot's file.
    {{2500, 3000, What::capture, 0, 3}, {600, 950, What::disk_stuck, 3, 2}},
}};

}  // namespace

std::vector<Event> draw_situation(Dice& dice) {
    const Situation& drawn =
        situations[static_cast<std::size_t>(dice.below(static_cast<int>(situations.size())))];
    std::vector<Event> events;
    for (const Step& step : drawn) {
        const std::chrono::milliseconds after(step.soonest +
                                              dice.below(step.latest - step.soonest + 1));
        const Event event{after, step.what, step.first + dice.below(step.forms)};
        if (dice.below(12) != 0) {
            events.push_back(event);
        }
    }
    return events;
}

}  // namespace afternoons
