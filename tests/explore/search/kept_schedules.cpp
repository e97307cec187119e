#include "tests/explore/search/kept_schedules.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/explore/search/processes.h"
#include "tests/explore/search/scene_search.h"

namespace explore {

namespace {

struct Kept {
    std::string mistake;
    std::string schedule;  // with its scene
};

std::vector<Kept> kept_in(const std::string& file) {
    std::ifstream lines(file);
    std::vector<Kept> all;
    std::string mistake;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("# ")) {
            mistake = line.substr(2);
        } else if (!line.empty()) {
            all.push_back({mistake, line});
        }
    }
    if (all.empty()) {
        std::fprintf(stderr, "explore: no schedules in %s\n", file.c_str());
        std::exit(2);
    }
    return all;
}

// `runs` is 0 when it could not be played.
void replay(const WorkerLibrary& worker, const std::string& schedule, Findings& findings) {
    const std::size_t space = std::min(schedule.find(' '), schedule.size());
    findings = Findings{};
    if (const Scene* const scene = scene_named(schedule.substr(0, space))) {
        replay_schedule(worker, *scene, schedule.c_str() + space, findings);
    } else {
        findings.failed = true;
        copy(findings.complaint, "there is no such scene");
    }
}

const std::string* worker_with(const std::string& mistake,
                               const std::vector<std::string>& workers) {
    const auto found = std::find_if(workers.begin(), workers.end(), [&](const std::string& path) {
        return std::filesystem::path(path).stem() == mistake;
    });
    return found == workers.end() ? nullptr : &*found;
}

int result(int passed, int failed) {
    std::printf("%d passed, %d failed, 0 skipped\n", passed, failed);
    return failed == 0 ? 0 : 1;
}

}  // namespace

int replay_all(const std::string& path, const std::string& file) {
    WorkerLibrary worker{};
    if (!load_worker(path, worker)) {
        return 2;
    }
    int passed = 0;
    int failed = 0;
    for (const Kept& kept : kept_in(file)) {
        Findings findings;
        replay(worker, kept.schedule, findings);
        (findings.failed ? failed : passed) += 1;
        if (findings.failed) {
            std::printf("%s%s\n  %s\n", findings.story, kept.schedule.c_str(), findings.complaint);
        }
    }
    return result(passed, failed);
}

int replay_planted(const std::vector<std::string>& workers, const std::string& file,
                   std::size_t jobs) {
    const std::vector<Kept> all = kept_in(file);
    int passed = 0;
    int failed = 0;
    in_processes(
        all.size(), jobs,
        [&](std::size_t i, Findings& findings) {
            WorkerLibrary worker{};
            const std::string* const path = worker_with(all[i].mistake, workers);
            if (path != nullptr && load_worker(*path, worker)) {
                replay(worker, all[i].schedule, findings);
            }
        },
        [&](std::size_t i, const Findings& findings) {
            const bool shown = findings.failed && findings.runs > 0;
            (shown ? passed : failed) += 1;
            if (!shown) {
                std::printf("FAILED  %s is not shown any more by %s\n", all[i].mistake.c_str(),
                            all[i].schedule.c_str());
            }
        });
    for (const std::string& path : workers) {
        const std::string name = std::filesystem::path(path).stem();
        if (std::none_of(all.begin(), all.end(),
                         [&](const Kept& kept) { return kept.mistake == name; })) {
            ++failed;
            std::printf("FAILED  no schedule is kept for %s\n", name.c_str());
        }
    }
    return result(passed, failed);
}

}  // namespace explore
