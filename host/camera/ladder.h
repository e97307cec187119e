// The way in which a worker is ended: QUIT, the end of its input, SIGTERM, SIGKILL, each only when
// the one before it did not do in its time.
#pragma once

#include <optional>

#include "host/values/requests.h"
#include "host/values/time.h"

namespace host {

class Ladder {
  public:
    // From now on; the first one counts.
    void begin(Time rung, Time now);

    // The step that is to be taken now. Called until there is none.
    std::optional<WorkerEnd> next(Time now);

    // When the next step is due.
    Time wake_at() const {
        return next_at_;
    }

    // The last step that was taken; `gone` when none was.
    WorkerEnd step() const {
        return step_;
    }

    // The step that was taken came to nothing: the next one is due at once.
    void missed(Time now);

  private:
    Time rung_{};
    Time next_at_ = Time::max();
    bool begun_ = false;
    WorkerEnd step_ = WorkerEnd::gone;
};

}  // namespace host
