#include "tests/explore/search/hunt.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <fstream>

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

// `schedule` in the findings is preceded by the scene.
void hunt(const std::string& path, Findings& findings) {
    WorkerLibrary worker{};
    if (!load_worker(path, worker)) {
        std::snprintf(findings.complaint, sizeof findings.complaint, "could not be loaded");
        return;
    }
    std::uint64_t runs = 0;
    const Effort efforts[] = {{0, 0, 1}, {1, 0, 1}, {1, 2000, 1}, {2, 0, 1}, {2, 20'000, 10'000}};
    for (const Effort& effort : efforts) {
        for (const Scene* scene : scenes()) {
            search_scene(worker, *scene, effort, findings);
            runs += findings.runs;
            findings.runs = runs;
            findings.simulated_ms = static_cast<std::uint64_t>(processor_time() * 1000);
            if (findings.failed) {
                const std::string schedule = findings.schedule;
                std::snprintf(findings.schedule, sizeof findings.schedule, "%s %s", scene->name,
                              schedule.c_str());
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
            std::printf("%-32s %10" PRIu64 " %8.2f  %s\n%34s%s\n", name.c_str(), findings.runs,
                        static_cast<double>(findings.simulated_ms) / 1000,
                        findings.failed ? findings.schedule : "MISSED", "", findings.complaint);
            std::fflush(stdout);
            found += findings.failed ? 1U : 0U;
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
