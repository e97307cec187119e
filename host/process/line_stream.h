// The lines that come out of a worker. A thread of its own reads the pipe to the end, whether or
// not anybody asks for the lines: a worker whose pipe is full stands still on all its threads. What
// waits to be taken is bounded: a worker that passes the limits is cut off.
#pragma once

#include <condition_variable>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "host/process/backlog.h"
#include "host/process/clock.h"
#include "host/process/mutex.h"
#include "host/process/pipe.h"

namespace host {

// Every operation may be called from any thread.
class LineStream {
  public:
    // When the limits are passed, `cut_off` is called once, on the stream's own thread: the pipe is
    // closed by then, and the destructor waits for the call. It may use the stream, but must not
    // destroy it.
    LineStream(Descriptor read_end, Pipe wake_up, const OutputLimits& limits = {},
               std::function<void()> cut_off = {});
    ~LineStream();

    // The next line, waiting for it until the deadline; nothing when none came or the output has
    // ended.
    std::optional<Line> next(TimePoint deadline);

    // No further line can come, and all have been taken.
    bool ended();

    // Why the output was cut off, a sentence about the worker; empty when it was not.
    std::string trouble();

    // Closes the reading end: whoever writes from now on gets EPIPE. Lines already read can still
    // be taken.
    void close();

  private:
    void drain(Descriptor read_end, Descriptor woken);
    bool take(std::string_view bytes, TimePoint at);

    const std::function<void()> cut_off_;
    Mutex mutex_;
    std::condition_variable changed_;
    Backlog backlog_ HOST_GUARDED_BY(mutex_);
    bool ended_ HOST_GUARDED_BY(mutex_) = false;
    // Closed to make the drain thread let go of the pipe.
    Descriptor wake_up_ HOST_GUARDED_BY(mutex_);

    std::thread drain_thread_;  // the constructor and the destructor only
};

}  // namespace host
