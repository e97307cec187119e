#include "tests/worker/runner/playing/performer.h"

#include <cstdio>

#include "tests/worker/runner/playing/lanes.h"

namespace transcript {

using host::Clock;
using host::TimePoint;

void Performer::note(TimePoint at, const std::string& what) {
    char time[32];
    std::snprintf(time, sizeof time, "%8.3f ", std::chrono::duration<double>(at - start_).count());
    recent_.push_back(time + shortened(what));
}

std::string Performer::end_of_output() {
    if (!stage_.worker().output_ended()) {
        return "nothing";
    }
    const auto exit = stage_.worker().await_exit(host::after(std::chrono::seconds(5)));
    return "the end of the output (" + (exit ? describe(*exit) : "still running") + ")";
}

Verdict Performer::perform(const Send& send) {
    const std::string bytes = stage_.filled(send.bytes);
    happened_ = Clock::now();
    note(happened_, "> " + bytes.substr(0, bytes.size() - (bytes.ends_with('\n') ? 1 : 0)));
    // A worker that no longer listens is not this step's failure: what it says or how it ends is
    // the next one's.
    stage_.worker().send_bytes(bytes);
    return {};
}

Verdict Performer::perform(const Expect& expect) {
    return perform(Block{{{expect}}});
}

Verdict Performer::perform(const Block& block) {
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

Verdict Performer::perform(const Control& control) {
    const std::string line = stage_.filled(control.line);
    happened_ = Clock::now();
    note(happened_, "! " + line);
    const std::string failure = stage_.tell_camera(line);
    if (!failure.empty()) {
        return Mismatch{"ok from the camera", failure};
    }
    return {};
}

Verdict Performer::perform(const CloseInput&) {
    happened_ = Clock::now();
    note(happened_, "@ close stdin");
    stage_.worker().close_input();
    return {};
}

Verdict Performer::perform(const CloseOutput&) {
    happened_ = Clock::now();
    note(happened_, "@ close stdout");
    stage_.worker().close_output();
    return {};
}

Verdict Performer::perform(const Signal& signal) {
    happened_ = Clock::now();
    note(happened_, "@ signal " + std::to_string(signal.number));
    if (!stage_.worker().signal(signal.number)) {
        return Mismatch{"a worker to send the signal to", end_of_output()};
    }
    return {};
}

std::string shortened(const std::string& text) {
    constexpr std::size_t most = 300;
    return text.size() <= most
               ? text
               : text.substr(0, most) + "... (" + std::to_string(text.size()) + " bytes)";
}

}  // namespace transcript
