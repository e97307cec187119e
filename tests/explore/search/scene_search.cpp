#include "tests/explore/search/scene_search.h"

#include <algorithm>
#include <string>

#include "tests/explore/faults/circumstances.h"
#include "tests/explore/search/depth_first.h"
#include "tests/explore/search/random_priorities.h"
#include "tests/explore/search/replay.h"
#include "tests/explore/search/search.h"

namespace explore {

void search_scene(const WorkerLibrary& worker, const Scene& scene, const Effort& effort,
                  Findings& findings) {
    findings = Findings{};
    Search search{worker, scene, findings};
    std::uint32_t longest = 1;
    DepthFirst all(effort.bound);
    while (all.next_run()) {
        if (search.play_once(all, false) == Verdict::wrong) {
            tell_failure(search, all.taken);
            return;
        }
        longest = std::max(longest, run.turns);
    }
    RandomPriorities priorities;
    for (std::uint64_t i = 0; i < effort.random; ++i) {
        priorities.next_run(effort.seed + i, longest, scene.jumps);
        if (search.play_once(priorities, true) == Verdict::wrong) {
            tell_failure(search, priorities.taken);
            return;
        }
    }
}

void replay_schedule(const WorkerLibrary& worker, const Scene& scene, const char* schedule,
                     Findings& findings) {
    findings = Findings{};
    Search search{worker, scene, findings};
    Schedule deviations;
    if (!from_text(take_circumstances(schedule), deviations)) {
        findings.failed = true;
        copy(findings.complaint, "this is not a schedule");
        return;
    }
    Replay replay(deviations);
    findings.failed = search.play_once(replay, true) == Verdict::wrong;
    copy(findings.complaint, run.complaint);
    copy(findings.schedule, schedule);
    copy(findings.story, story());
}

int count_unfaithful_replays(const WorkerLibrary& worker, const Scene& scene, int runs) {
    Findings findings{};
    Search search{worker, scene, findings};
    RandomPriorities priorities;
    int unfaithful = 0;
    for (int i = 0; i < runs; ++i) {
        constexpr std::uint32_t usual_length = 200;
        priorities.next_run(static_cast<std::uint64_t>(i), usual_length, scene.jumps);
        search.play_once(priorities, true);
        const std::uint64_t key = run_key();
        const std::string first = story();
        Schedule recorded;
        from_text(to_text(priorities.taken), recorded);
        Replay replay(recorded);
        search.play_once(replay, true);
        unfaithful += run_key() != key || story() != first ? 1 : 0;
    }
    return unfaithful;
}

}  // namespace explore
