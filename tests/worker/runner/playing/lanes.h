// Matching the lines of a block, whose lanes may come interleaved anyhow.
#pragma once

#include <string>
#include <vector>

#include "host/process/line_stream.h"
#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

class Lanes {
  public:
    // `before`: when the step before the block happened.
    Lanes(const Block& block, host::TimePoint before);

    bool complete() const;

    // False when the line is the next one of no lane, or comes at a wrong time.
    bool take(const host::Line& line);

    // The lines that could come next, as the transcript writes them.
    std::string awaited() const;

    // How long to wait for the next line.
    host::Duration patience() const;

  private:
    // A line may be the next one of several lanes, so all the ways to take the lines so far are
    // followed.
    struct Way {
        std::vector<std::size_t> next;
        std::vector<host::TimePoint> happened;
    };

    const Block& block_;
    std::vector<Way> ways_;
};

// Whether a line that came at `at` is in time for one that may come `not_before` after the step
// before it.
bool in_time(const std::optional<Milliseconds>& not_before, host::TimePoint before,
             host::TimePoint at);

// How long to wait for a step: generous, for only a failing transcript waits that long.
host::Duration patience_for(const std::optional<Milliseconds>& not_before);

}  // namespace transcript
