// How often a worker was lost, and when the next one may be started.
#pragma once

#include <deque>

#include "host/brain/times.h"
#include "host/values/time.h"

namespace host::brain {

class Restarts {
  public:
    explicit Restarts(const Times& times) : times_(times) {}

    // The worker was ready for commands.
    void ready(Time now) {
        ready_since_ = now;
    }

    // It was lost. The next may be started at the time that is given back.
    Time lost(Time now);

    // Whether workers are lost so often that only one a minute is started.
    bool too_many() const {
        return too_many_;
    }

  private:
    const Times& times_;
    std::deque<Time> losses_;
    Time ready_since_ = never;
    bool too_many_ = false;
};

}  // namespace host::brain
