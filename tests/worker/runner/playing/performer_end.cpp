// The steps that say how the worker ends.
#include <algorithm>
#include <signal.h>

#include "tests/worker/runner/playing/lanes.h"
#include "tests/worker/runner/playing/performer.h"

namespace transcript {

using host::TimePoint;

Verdict Performer::perform(const Exits& exits) {
    const std::string wanted = "exit with status " + std::to_string(exits.status);
    const TimePoint deadline = host::after(
        std::max({patience_for({}), patience_for(exits.not_before), patience_for(exits.within)}));
    if (const auto line = stage_.worker().next_line(deadline)) {
        note(line->at, "< " + line->text);
        return Mismatch{wanted + ", and no further line", "< " + shortened(line->text)};
    }
    const auto exit = stage_.worker().await_exit(deadline);
    if (!exit) {
        return Mismatch{wanted, "the worker still runs"};
    }
    const auto waited = std::chrono::round<Milliseconds>(exit->at - happened_);
    const std::string came = describe(*exit) + " after " + std::to_string(waited.count()) + " ms";
    note(exit->at, "@ " + came);
    if (exit->signal != 0 || exit->status != exits.status) {
        return Mismatch{wanted, came};
    }
    if (exits.within && exit->at - happened_ > *exits.within) {
        return Mismatch{wanted + " within " + std::to_string(exits.within->count()) + " ms", came};
    }
    if (!in_time(exits.not_before, happened_, exit->at)) {
        return Mismatch{wanted + " after " + std::to_string(exits.not_before->count()) + " ms",
                        came};
    }
    return {};
}

Verdict Performer::perform(const Killed& killed) {
    const std::string wanted =
        "nothing for " + std::to_string(killed.after.count()) + " ms, then an end by SIGKILL";
    if (const auto line = stage_.worker().next_line(host::after(killed.after))) {
        note(line->at, "< " + line->text);
        return Mismatch{wanted, "< " + shortened(line->text)};
    }
    if (stage_.worker().output_ended()) {
        return Mismatch{wanted, end_of_output()};
    }
    stage_.worker().signal(SIGKILL);
    const auto exit = stage_.worker().await_exit(host::after(patience_for({})));
    if (!exit || exit->signal != SIGKILL) {
        return Mismatch{wanted, exit ? describe(*exit) : "the worker still runs"};
    }
    return {};
}

}  // namespace transcript
