// The signals of a tap, as bytes in a pipe that its one loop looks at.
#pragma once

#include <poll.h>

#include "host/process/pipe.h"

namespace tap {

class Signals {
  public:
    // From now on what others send is caught, and the end of a child told. Once in a process.
    Signals();

    pollfd arrival() const {
        return {pipe_.read_end.number(), POLLIN, 0};
    }

    // The next one that has come; 0: none.
    int take() const;

  private:
    host::Pipe pipe_;
};

// Ends this process as the worker ended: with its status, or by the signal that it died of.
[[noreturn]] void end_like(int wait_status);

}  // namespace tap
