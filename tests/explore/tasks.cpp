#include "tests/explore/tasks.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "tests/explore/faults/search_faults.h"
#include "tests/explore/faults/states.h"
#include "tests/explore/faults/tours.h"
#include "tests/explore/report.h"
#include "tests/explore/scene.h"
#include "tests/explore/search/processes.h"
#include "tests/explore/search/scene_search.h"
#include "tests/explore/worker_library.h"

namespace explore {

namespace {

using Scenes = std::vector<const Scene*>;

Scenes chosen(const Scenes& all, const std::vector<std::string>& names) {
    Scenes result;
    for (const std::string& name : names) {
        const Scene* const scene = scene_named(all, name);
        if (scene == nullptr) {
            std::fprintf(stderr, "explore: there is no scene %s\n", name.c_str());
            std::exit(2);
        }
        result.push_back(scene);
    }
    return names.empty() ? all : result;
}

WorkerLibrary load(const std::string& path) {
    WorkerLibrary worker{};
    if (!load_worker(path, worker)) {
        std::exit(2);
    }
    return worker;
}

// Those that take the longest first, so that the processes end together.
Scenes by_length(const WorkerLibrary& worker, const Scenes& scenes) {
    std::vector<std::pair<std::uint64_t, const Scene*>> sized;
    for (const Scene* scene : scenes) {
        Findings glance;
        search_scene(worker, *scene, {1, 0, 0}, glance);
        sized.emplace_back(glance.runs, scene);
    }
    std::stable_sort(sized.begin(), sized.end(),
                     [](const auto& one, const auto& other) { return one.first > other.first; });
    Scenes result;
    for (const auto& [runs, scene] : sized) {
        result.push_back(scene);
    }
    return result;
}

std::uint64_t share(std::uint64_t whole, std::size_t parts) {
    return (whole + parts - 1) / parts;
}

// A search in which nothing went wrong with the world has shown nothing.
void demand(std::uint64_t struck, const char* complaint, Findings& findings) {
    if (!findings.failed && struck == 0) {
        findings.failed = true;
        copy(findings.complaint, complaint);
    }
}

int finish(Report& report, const Wishes& wishes) {
    report.close();
    if (!wishes.report.empty()) {
        report.write(wishes.report);
    }
    return report.failed() == 0 ? 0 : 1;
}

}  // namespace

int list_scenes() {
    for (const Scenes& all : {scenes(), fault_tours(), cable_scenes()}) {
        for (const Scene* scene : all) {
            std::printf("%-32s %s\n", scene->name, scene->proves);
        }
    }
    return 0;
}

int explore_scenes(const Wishes& wishes) {
    const WorkerLibrary worker = load(wishes.worker);
    const Scenes wanted = by_length(worker, chosen(scenes(), wishes.scenes));
    const Effort effort{wishes.bound, share(wishes.runs, wanted.size()), wishes.seed};
    Report report("Every schedule with up to " + std::to_string(wishes.bound) +
                  " pre-emptions, then random priorities from the seeds " +
                  std::to_string(effort.seed) + " to " +
                  std::to_string(effort.seed + effort.random - 1) + " in each scene.");
    in_processes(
        wanted.size(), wishes.jobs,
        [&](std::size_t i, Findings& findings) {
            search_scene(worker, *wanted[i], effort, findings);
        },
        [&](std::size_t i, const Findings& findings) { report.add(*wanted[i], findings); });
    return finish(report, wishes);
}

int explore_faults(const Wishes& wishes) {
    const WorkerLibrary worker = load(wishes.worker);
    const Scenes tours = chosen(fault_tours(), wishes.scenes);
    const Scenes cables = wishes.scenes.empty() ? cable_scenes() : Scenes{};
    const std::string pairs = wishes.one_pair_in == 1
                                  ? "all pairs"
                                  : "one in " + std::to_string(wishes.one_pair_in) + " pairs";
    Report report("Every fault of every SDK function alone and " + pairs +
                  " of them, and the cable pulled at every turn of a shot.");
    StruckInStates struck;
    in_processes(
        tours.size() + cables.size(), wishes.jobs,
        [&](std::size_t i, Findings& findings) {
            if (i < tours.size()) {
                search_faults(worker, *tours[i], wishes.one_pair_in, wishes.seed, findings);
                demand(findings.faults, "no fault struck", findings);
            } else {
                search_cable(worker, *cables[i - tours.size()], wishes.seed, findings);
                demand(findings.pulls, "the cable was never pulled", findings);
            }
        },
        [&](std::size_t i, const Findings& findings) {
            if (i < tours.size()) {
                struck.add(tours[i]->name, findings);
            }
            report.add(*(i < tours.size() ? tours[i] : cables[i - tours.size()]), findings);
        });
    if (wishes.scenes.empty()) {
        for (const std::string& cell : struck.missing()) {
            report.demand(false, "never struck: " + cell);
        }
        const std::uint64_t fewest_pairs = 125'000 / wishes.one_pair_in;
        report.demand(report.sum().pairs >= fewest_pairs,
                      "fewer than " + std::to_string(fewest_pairs) + " pairs");
    }
    return finish(report, wishes);
}

int replay_one(const Wishes& wishes, const std::string& schedule) {
    const std::size_t space = std::min(schedule.find(' '), schedule.size());
    const Scene* const scene = scene_named(schedule.substr(0, space));
    if (scene == nullptr) {
        std::fprintf(stderr, "explore: there is no scene %s\n", schedule.substr(0, space).c_str());
        return 2;
    }
    const WorkerLibrary worker = load(wishes.worker);
    Findings findings;
    replay_schedule(worker, *scene, schedule.c_str() + space, findings);
    std::printf("%s%s: %s\n", findings.story, scene->name,
                findings.failed ? findings.complaint : "as the protocol promises");
    return findings.failed ? 1 : 0;
}

int check_replays(const Wishes& wishes) {
    const WorkerLibrary worker = load(wishes.worker);
    int passed = 0;
    int failed = 0;
    for (const Scene* scene : chosen(scenes(), wishes.scenes)) {
        constexpr int runs = 200;
        const int unfaithful = count_unfaithful_replays(worker, *scene, runs);
        (unfaithful == 0 ? passed : failed) += 1;
        if (unfaithful > 0) {
            std::printf("%-32s %d of %d replays differ\n", scene->name, unfaithful, runs);
        }
    }
    std::printf("%d passed, %d failed, 0 skipped\n", passed, failed);
    return failed == 0 ? 0 : 1;
}

}  // namespace explore
