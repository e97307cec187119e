// The steps that say what was asked of the camera.
#include <thread>

#include "tests/worker/runner/playing/lanes.h"
#include "tests/worker/runner/playing/performer.h"

namespace transcript {

using host::Clock;
using host::TimePoint;

Verdict Performer::perform(const Calls& calls) {
    std::vector<Call> expected = calls.calls;
    std::string all_expected = "=";
    for (Call& call : expected) {
        call.text = stage_.filled(call.text);
        all_expected += (all_expected == "=" ? " " : ", ") + call.text;
    }
    // A call behind the last line out, or one that hangs, may still be on its way into the journal.
    const TimePoint deadline = host::after(patience_for({}));
    std::string error;
    for (;;) {
        const bool over = Clock::now() >= deadline || stage_.worker().await_exit(Clock::now());
        if (!journal_.read_on(error)) {
            return Mismatch{all_expected, error};
        }
        if (over || journal_.calls(calls.with_reads).size() >= expected.size()) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    const std::vector<JournaledCall> made = journal_.calls(calls.with_reads);
    const std::string different = compare(expected, made, journal_.settled_end());
    if (!different.empty()) {
        std::string all_made;
        for (const JournaledCall& call : made) {
            all_made += "\n        " + call.text + " -> " + call.result;
        }
        return Mismatch{all_expected, different + "; asked of the camera since the last =:" +
                                          (all_made.empty() ? " nothing" : all_made)};
    }
    journal_.settle();
    return {};
}

}  // namespace transcript
