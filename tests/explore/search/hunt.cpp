#include "tests/explore/search/hunt.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <optional>

#include "tests/explore/faults/circumstances.h"
#include "tests/explore/faults/search_faults.h"
#include "tests/explore/faults/tours.h"
#include "tests/explore/search/processes.h"
#include "tests/explore/search/scene_search.h"

namespace explore {

namespace {

constexpr double longest_hunt = 60;  // seconds of processor time

double processor_time() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

std::string name_of(const std::string& path) {
    const std::size_t start = path.rfind('/') + 1;
    return path.substr(start, path.rfind('.') - start);
}

// One scene with an effort; an effort of none stands for the faults, each alone.
void search(const WorkerLibrary& worker, const Scene& scene, const std::optional<Effort>& effort,
            Findings& findings) {
    constexpr std::uint64_t no_pairs = ~std::uint64_t{0};
    if (effort) {
        search_scene(worker, scene, *effort, findings);
    } else {
        search_faults(worker, scene, no_pairs, 1, findings);
    }
}

// `schedule` in the findings is preceded by the scene; `simulated_ms` is the time that it took.
void hunt(const std::string& path, Findings& findings) {
    WorkerLibrary worker{};
    if (!load_worker(path, worker)) {
        return;
    }
    std::uint64_t runs = 0;
    const std::optional<Effort> efforts[] = {{{0, 0, 1}},    {{1, 0, 1}}, std::nullopt,
                                             {{1, 2000, 1}}, {{2, 0, 1}}, {{2, 20'000, 10'000}}};
    for (const std::optional<Effort>& effort : efforts) {
        circumstances = Circumstances{};
        for (const Scene* scene : effort ? scenes() : fault_tours()) {
            search(worker, *scene, effort, findings);
            runs += findings.runs;
            findings.runs = runs;
            findings.simulated_ms = static_cast<std::uint64_t>(processor_time() * 1000);
            if (findings.failed) {
                const std::string schedule = findings.schedule;
                copy(findings.schedule, scene->name + (" " + schedule));
                return;
            }
            if (processor_time() > longest_hunt) {
                return;
            }
        }
    }
}

}  // namespace

int hunt_planted(const std::vector<std::string>& workers, std::size_t jobs) {
    std::size_t found = 0;
    std::printf("%-32s %10s %8s  %s\n", "planted", "runs", "seconds", "found by");
    in_processes(
        workers.size(), jobs,
        [&](std::size_t i, Findings& findings) { hunt(workers[i], findings); },
        [&](std::size_t i, const Findings& findings) {
            const std::string name = name_of(workers[i]);
            const bool found_it = findings.failed && findings.schedule[0] != '\0';
            std::printf("%-32s %10" PRIu64 " %8.2f  %s\n%34s%s\n", name.c_str(), findings.runs,
                        static_cast<double>(findings.simulated_ms) / 1000,
                        found_it ? findings.schedule : "MISSED", "", findings.complaint);
            std::fflush(stdout);
            found += found_it ? 1U : 0U;
        });
    std::printf("%zu passed, %zu failed\n", found, workers.size() - found);
    return found == workers.size() ? 0 : 1;
}

int replay_all(const std::string& path, const std::string& file) {
    WorkerLibrary worker{};
    std::ifstream lines(file);
    if (!load_worker(path, worker) || !lines) {
        std::fprintf(stderr, "explore: cannot read %s\n", file.c_str());
        return 2;
    }
    int passed = 0;
    int failed = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::size_t space = std::min(line.find(' '), line.size());
        const Scene* const scene = scene_named(line.substr(0, space));
        Findings findings{};
        findings.failed = true;
        if (scene != nullptr) {
            replay_schedule(worker, *scene, line.c_str() + space, findings);
        }
        (findings.failed ? failed : passed) += 1;
        if (findings.failed) {
            std::printf("%s%s\n  %s\n", findings.story, line.c_str(), findings.complaint);
        }
    }
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 && passed > 0 ? 0 : 1;
}

}  // namespace explore
