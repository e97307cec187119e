// Makes a thread that waits in poll() look up.
#pragma once

#include "host/process/pipe.h"

namespace serve {

class WakeUp {
  public:
    WakeUp();

    // From any thread; once is as good as often.
    void wake();

    // For the thread that waits: readable after wake(), until clear().
    int descriptor() const {
        return pipe_.read_end.number();
    }
    void clear();

  private:
    host::Pipe pipe_;
};

}  // namespace serve
