// The process beside a tap that keeps the record and judges the host. It takes nothing from the
// way of the bytes, and outlives a tap that is killed: only so can that be said, and a worker that
// hangs be ended with it.
#pragma once

#include <string>
#include <sys/types.h>

#include "host/process/clock.h"
#include "host/process/pipe.h"
#include "tether/conversation/record.h"
#include "tether/tap/judge.h"
#include "tether/tap/notices.h"

namespace tap {

// What the observer answers at its end.
enum class Verdict : char { no_complaint = 'n', complaints = 'c' };

class Observer {
  public:
    // `record`: open, or not at all. `name`: how it is called on standard error; empty: there is
    // none. `folder`: what the worker was started with for downloads.
    Observer(tether::Record& record, std::string name, host::TimePoint start, std::string folder);

    // Until the tap or its worker has ended.
    void observe(const host::Descriptor& notices);

    // Says on standard error what the host did wrong, and where the record is.
    Verdict report() const;

  private:
    // A line that has begun.
    struct Begun {
        char mark;
        std::string text;
        bool continued = false;  // its beginning has been dealt with
    };

    void obey(const Notice& notice);
    void cut(Begun& begun, const Notice& notice);
    void deal_with(Begun& begun, bool whole, host::TimePoint at);
    tether::RecordLine remark(const std::string& text, host::TimePoint at);
    void tap_was_killed();
    void end_worker();

    tether::Record& record_;
    const std::string name_;
    const host::TimePoint start_;
    Judge judge_;
    Begun to_worker_{'>', {}};
    Begun from_worker_{'<', {}};
    pid_t worker_ = 0;
    bool ended_ = false;
    bool all_told_ = true;
};

}  // namespace tap
