#include "tests/explore/search/search.h"

#include <algorithm>
#include <string>

#include "tests/explore/faults/circumstances.h"
#include "tests/explore/search/replay.h"

namespace explore {

Verdict Search::play_once(Choices& choices, bool thorough) {
    run.thorough = thorough;
    const Verdict verdict = play(worker, scene, choices, model);
    ++findings.runs;
    findings.simulated_ms += static_cast<std::uint64_t>(run.now / millisecond);
    if (verdict != Verdict::pruned) {
        findings.schedules += ends.insert(run_key()) ? 1 : 0;
    }
    return verdict;
}

namespace {

bool still_wrong(Search& search, const Schedule& schedule) {
    Replay replay(schedule);
    return search.play_once(replay, true) == Verdict::wrong;
}

// Leaves out every deviation that the mistake does not need.
Schedule shortened(Search& search, Schedule schedule) {
    for (std::size_t length = std::max<std::size_t>(schedule.size() / 2, 1);; length /= 2) {
        for (std::size_t start = 0; start < schedule.size();) {
            Schedule shorter = schedule;
            const auto from = shorter.begin() + static_cast<std::ptrdiff_t>(start);
            const std::size_t count = std::min(length, schedule.size() - start);
            shorter.erase(from, from + static_cast<std::ptrdiff_t>(count));
            if (still_wrong(search, shorter)) {
                schedule = shorter;
            } else {
                start += count;
            }
        }
        if (length <= 1) {
            return schedule;
        }
    }
}

}  // namespace

void tell_failure(Search& search, const Schedule& schedule) {
    const std::uint64_t runs = search.findings.runs;
    const std::string first_complaint = run.complaint;
    const std::string first_story = story();
    const Schedule shorter = shortened(search, schedule);
    const bool faithful = still_wrong(search, shorter);
    search.findings.runs = runs;
    search.findings.failed = true;
    copy(search.findings.complaint,
         faithful ? run.complaint : first_complaint + " (not seen again in the replay)");
    copy(search.findings.story, faithful ? story() : first_story);
    copy(search.findings.schedule,
         text_of_circumstances() + to_text(faithful ? shorter : schedule));
}

}  // namespace explore
