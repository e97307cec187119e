// The loop of a tap: bytes both ways, signals, and the end of the worker.
#pragma once

#include <optional>
#include <sys/types.h>

#include "tether/tap/drain_gauge.h"
#include "tether/tap/notices.h"
#include "tether/tap/one_way.h"
#include "tether/tap/signals.h"

namespace tap {

class Passing {
  public:
    // The worker's ends of its pipes; the host's are this process's standard input and output.
    Passing(pid_t worker, host::Descriptor input, host::Descriptor output, const Signals& signals,
            NoticeWriter& notices);

    // Until the worker has ended and what it had to say has been passed on. Its status, as
    // waitpid() gives it.
    int pass();

  private:
    bool is_over() const;
    void step();
    void pass_input(short at_source, short at_sink);
    void pass_output(short at_source, short at_sink);
    void look_whether_it_is_read();
    void take_signals();

    const pid_t worker_;
    const Signals& signals_;
    NoticeWriter& notices_;
    OneWay to_worker_;
    OneWay from_worker_;
    UnreadBytes unread_;
    DrainGauge gauge_;
    std::optional<int> ended_;
    bool told_to_end_ = false;  // when the worker had ended, but the host had not read it all
};

}  // namespace tap
