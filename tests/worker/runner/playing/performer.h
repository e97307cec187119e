// Carries out the steps of one transcript, one after the other.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/process/clock.h"
#include "tests/worker/runner/playing/journal.h"
#include "tests/worker/runner/playing/stage.h"
#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

struct Mismatch {
    std::string expected;
    std::string came;
};
using Verdict = std::optional<Mismatch>;

class Performer {
  public:
    explicit Performer(Stage& stage)
        : stage_(stage), journal_(stage.journal()), start_(host::Clock::now()), happened_(start_) {}

    // performer.cpp
    Verdict perform(const Send& send);
    Verdict perform(const Expect& expect);
    Verdict perform(const Block& block);
    Verdict perform(const Control& control);
    Verdict perform(const CloseInput&);
    Verdict perform(const CloseOutput&);
    Verdict perform(const Signal& signal);

    // performer_calls.cpp
    Verdict perform(const Calls& calls);

    // performer_end.cpp
    Verdict perform(const Exits& exits);
    Verdict perform(const Killed& killed);

    const std::vector<std::string>& recent() const {
        return recent_;
    }

  private:
    void note(host::TimePoint at, const std::string& what);
    std::string end_of_output();

    Stage& stage_;
    Journal journal_;
    const host::TimePoint start_;
    host::TimePoint happened_;  // the last step other than "="
    std::vector<std::string> recent_;
};

// Long texts would bury what differs.
std::string shortened(const std::string& text);

}  // namespace transcript
