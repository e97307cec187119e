// PRIME and its answer. Commands are done in order, so an answer says that all before it is done.
#pragma once

#include <cstdint>
#include <deque>

#include "host/values/time.h"

namespace host::brain {

class Fence {
  public:
    using Number = std::uint64_t;  // from 1 on

    // A PRIME goes out.
    Number sent(Time now);

    // A PRIME was answered. False when more answers come than were asked for.
    bool heard(Time now);

    bool passed(Number number) const {
        return answered_ >= number;
    }
    bool outstanding() const {
        return !waiting_.empty();
    }

    // Since when the oldest one has been the worker's to answer; only while one is outstanding.
    Time silent_since() const;

    // When the worker was last heard of or spoken to.
    Time last() const {
        return last_;
    }

    // What was not answered until now is not held against the worker.
    void excuse(Time now);

    // Another worker: nothing will be answered any more.
    void forget(Time now);

  private:
    std::deque<Time> waiting_;
    Number sent_ = 0;
    Number answered_ = 0;
    Time last_{};
    Time from_{};
};

}  // namespace host::brain
