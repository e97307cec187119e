#include "tests/explore/search/hunt.h"

#include <cinttypes>
#include <cstdio>
#include <ctime>
#include <filesystem>
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
            const std::string name = std::filesystem::path(workers[i]).stem();
            const bool seen = findings.failed && findings.schedule[0] != '\0';
            const double seconds = static_cast<double>(findings.simulated_ms) / 1000;
            const bool found_it = seen && seconds <= longest_hunt;
            std::printf("%-32s %10" PRIu64 " %8.2f  %s\n%34s%s\n", name.c_str(), findings.runs,
                        seconds,
                        found_it ? findings.schedule
                        : seen   ? "TOO LATE"
                                 : "MISSED",
                        "", findings.complaint);
            std::fflush(stdout);
            found += found_it ? 1U : 0U;
        });
    std::printf("%zu passed, %zu failed, 0 skipped\n", found, workers.size() - found);
    return found == workers.size() ? 0 : 1;
}

}  // namespace explore
