// What a tap tells its observer, a process of its own, over a pipe. Telling never waits: what the
// observer is too slow for is kept, up to a bound.
#pragma once

#include <cstdint>
#include <poll.h>
#include <string>
#include <string_view>

#include "host/process/clock.h"
#include "host/process/pipe.h"

namespace tap {

enum class Kind : std::uint8_t {
    started,        // the worker; its process number
    to_worker,      // bytes
    from_worker,    // bytes
    input_ended,    // the host closed the worker's input
    host_left,      // the host closed its end of the worker's output
    worker_deaf,    // the worker closed its input
    output_ended,   // the worker closed its output
    signalled,      // the host sent a signal; its number
    stalled,        // the host does not read; since so many ms
    drained,        // it reads again; after so many ms
    out_of_memory,  // what came behind is not told
    ended,          // the worker did; its status as waitpid() gives it
};

struct Notice {
    Kind kind{};
    host::TimePoint at;
    std::int64_t number = 0;
    std::string bytes;
};

class NoticeWriter {
  public:
    explicit NoticeWriter(host::Descriptor pipe);

    void tell(Kind kind, host::TimePoint at, std::int64_t number = 0, std::string_view bytes = {});

    // What poll() is to look for, and what is to be done when it has found it.
    pollfd room() const;
    void flush();

    // Waits until all is told; false when nobody takes any of it for so long.
    bool finish(host::Duration patience);

  private:
    void append(Kind kind, host::TimePoint at, std::int64_t number, std::string_view bytes);

    host::Descriptor pipe_;
    std::string waiting_;
    std::size_t told_ = 0;  // of waiting_
    bool full_ = false;
};

// The next notice, waiting for it; false when the tap is gone.
bool read_notice(const host::Descriptor& pipe, Notice& notice);

}  // namespace tap
