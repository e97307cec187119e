// Plays scenes with the worker under schedules that this program decides, and tells whether what
// the worker did in each of them is what the protocol promises.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "tests/explore/search/hunt.h"
#include "tests/explore/search/kept_schedules.h"
#include "tests/explore/tasks.h"

namespace {

int carry_out(int argc, char** argv) {
    using namespace explore;
    Wishes wishes;
    wishes.worker = EXPLORED_WORKER;
    std::vector<std::string> planted;
    std::string replay;
    std::string replays;
    bool list = false;
    bool faithful = false;
    bool faults = false;

    CLI::App app{"Plays the worker under schedules that are decided step by step"};
    app.add_option("--worker", wishes.worker, "The worker's library");
    app.add_option("--scene", wishes.scenes, "Only these scenes");
    app.add_option("--bound", wishes.bound, "Pre-emptions to exhaust");
    app.add_option("--runs", wishes.runs, "Random runs in all");
    app.add_option("--seed", wishes.seed, "Seed of the first random run");
    app.add_option("--jobs", wishes.jobs, "Processes");
    app.add_option("--report", wishes.report, "Also add the result to this file, as a table");
    app.add_flag("--faults", faults, "Play the faults of the SDK instead");
    app.add_option("--one-pair-in", wishes.one_pair_in, "How few pairs of faults to play; 1: all")
        ->check(CLI::PositiveNumber);
    app.add_option("--replay", replay, "Play one schedule: SCENE FAULT... TURN:FIBER...");
    app.add_option("--replays", replays,
                   "Play the schedules of this file; with --planted, each with its own mistake");
    app.add_flag("--faithful", faithful, "Check that replays repeat their runs exactly");
    app.add_option("--planted", planted, "Find the mistake in each of these workers");
    app.add_flag("--list", list, "Name the scenes");
    CLI11_PARSE(app, argc, argv);

    if (list) {
        return list_scenes();
    }
    if (!planted.empty() && !replays.empty()) {
        return replay_planted(planted, replays, wishes.jobs);
    }
    if (!planted.empty()) {
        return hunt_planted(planted, wishes.jobs);
    }
    if (!replay.empty()) {
        return replay_one(wishes, replay);
    }
    if (!replays.empty()) {
        return replay_all(wishes.worker, replays);
    }
    if (faithful) {
        return check_replays(wishes);
    }
    return faults ? explore_faults(wishes) : explore_scenes(wishes);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return carry_out(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "explore: %s\n", error.what());
        return 2;
    }
}
