#include "tests/runner/performance.h"

#include <algorithm>
#include <cstdio>
#include <signal.h>
#include <thread>

#include "tests/runner/journal.h"
#include "tests/runner/lanes.h"
#include "tests/runner/opening.h"
#include "tests/runner/stage.h"

namespace transcript {
namespace {

using host::Clock;
using host::TimePoint;

struct Mismatch {
    std::string expected;
    std::string came;
};
using Verdict = std::optional<Mismatch>;

// Long texts would bury what differs.
std::string shortened(const std::string& text) {
    constexpr std::size_t most = 300;
    return text.size() <= most
               ? text
               : text.substr(0, most) + "... (" + std::to_string(text.size()) + " bytes)";
}

class Performance {
  public:
    explicit Performance(Stage& stage)
        : stage_(stage), journal_(stage.journal()), start_(Clock::now()), happened_(start_) {}

    Verdict perform(const Send& send);
    Verdict perform(const Expect& expect);
    Verdict perform(const Block& block);
    Verdict perform(const Control& control);
    Verdict perform(const Calls& calls);
    Verdict perform(const CloseInput&);
    Verdict perform(const CloseOutput&);
    Verdict perform(const Signal& signal);
    Verdict perform(const Exits& exits);
    Verdict perform(const Killed& killed);

    const std::vector<std::string>& recent() const {
        return recent_;
    }

  private:
    void note(TimePoint at, const std::string& what);
    std::string end_of_output();

    Stage& stage_;
    Journal journal_;
    const TimePoint start_;
    TimePoint happened_;  // the last step other than "="
    std::vector<std::string> recent_;
};

void Performance::note(TimePoint at, const std::string& what) {
    char time[32];
    std::snprintf(time, sizeof time, "%8.3f ", std::chrono::duration<double>(at - start_).count());
    recent_.push_back(time + shortened(what));
}

std::string Performance::end_of_output() {
    if (!stage_.worker().output_ended()) {
        return "nothing";
    }
    const auto exit = stage_.worker().await_exit(host::after(std::chrono::seconds(5)));
    return "the end of the output (" + (exit ? describe(*exit) : "still running") + ")";
}

Verdict Performance::perform(const Send& send) {
    const std::string bytes = stage_.filled(send.bytes);
    happened_ = Clock::now();
    note(happened_, "> " + bytes.substr(0, bytes.size() - (bytes.ends_with('\n') ? 1 : 0)));
    // A worker that no longer listens is not this step's failure: what it says or how it ends is
    // the next one's.
    stage_.worker().send_bytes(bytes);
    return {};
}

Verdict Performance::perform(const Expect& expect) {
    return perform(Block{{{expect}}});
}

Verdict Performance::perform(const Block& block) {
    Block filled = block;
    for (auto& lane : filled.lanes) {
        for (Expect& expect : lane) {
            expect.text = stage_.filled(expect.text);
        }
    }
    Lanes lanes(filled, happened_);
    while (!lanes.complete()) {
        const std::string awaited = shortened(lanes.awaited());
        const auto line = stage_.worker().next_line(host::after(lanes.patience()));
        if (!line) {
            return Mismatch{awaited, end_of_output()};
        }
        const auto waited = std::chrono::round<Milliseconds>(line->at - happened_).count();
        note(line->at, "< " + line->text);
        if (!line->whole || !lanes.take(*line)) {
            return Mismatch{awaited, "< " + shortened(line->text) +
                                         (line->whole ? "" : " (without a line feed)") + ", " +
                                         std::to_string(waited) + " ms after the step before it"};
        }
        happened_ = line->at;
    }
    return {};
}

Verdict Performance::perform(const Control& control) {
    const std::string line = stage_.filled(control.line);
    happened_ = Clock::now();
    note(happened_, "! " + line);
    const std::string failure = stage_.tell_camera(line);
    if (!failure.empty()) {
        return Mismatch{"ok from the camera", failure};
    }
    return {};
}

Verdict Performance::perform(const Calls& calls) {
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

Verdict Performance::perform(const CloseInput&) {
    happened_ = Clock::now();
    note(happened_, "@ close stdin");
    stage_.worker().close_input();
    return {};
}

Verdict Performance::perform(const CloseOutput&) {
    happened_ = Clock::now();
    note(happened_, "@ close stdout");
    stage_.worker().close_output();
    return {};
}

Verdict Performance::perform(const Signal& signal) {
    happened_ = Clock::now();
    note(happened_, "@ signal " + std::to_string(signal.number));
    if (!stage_.worker().signal(signal.number)) {
        return Mismatch{"a worker to send the signal to", end_of_output()};
    }
    return {};
}

Verdict Performance::perform(const Exits& exits) {
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

Verdict Performance::perform(const Killed& killed) {
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

}  // namespace

std::optional<Failure> perform(const Transcript& transcript, const std::filesystem::path& worker) {
    std::string error;
    const auto stage = Stage::set_up(transcript, worker, error);
    if (!stage) {
        return Failure{{transcript.file, 1}, "a worker", error, {}, {}};
    }
    Performance performance(*stage);
    for (const auto& steps :
         {opening_steps(transcript), transcript.steps, closing_steps(transcript)}) {
        for (const Step& step : steps) {
            const Verdict verdict = std::visit(
                [&](const auto& action) { return performance.perform(action); }, step.action);
            if (verdict) {
                return Failure{step.place, verdict->expected, verdict->came, performance.recent(),
                               stage->complaints()};
            }
        }
    }
    const std::string complaints = stage->complaints();
    if (!complaints.empty()) {
        return Failure{transcript.steps.back().place, "nothing on standard error", "complaints",
                       performance.recent(), complaints};
    }
    return std::nullopt;
}

}  // namespace transcript
