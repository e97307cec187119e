// The lines between the host and its worker as they are shown and recorded.
#pragma once

#include <cstdint>
#include <string>

#include "host/camera.h"
#include "tether/conversation/record.h"
#include "tether/conversation/terminal.h"

namespace tether {

class WireView {
  public:
    // `start`: when the camera was made. Lines are recorded, and shown if `shown`; what the worker
    // writes on standard error goes to standard error in either case.
    WireView(host::TimePoint start, bool shown, Terminal& terminal, Record& record)
        : start_(start), shown_(shown), terminal_(terminal), record_(record) {}

    void show(const host::WireLine& line);
    void left_out(std::uint64_t count);

    void record(const host::Problem& problem);

    // A remark of tether's own, into the record.
    void note(const std::string& text);

  private:
    void say_that_the_record_ends(bool complete);

    const host::TimePoint start_;
    const bool shown_;
    Terminal& terminal_;
    Record& record_;
};

}  // namespace tether
