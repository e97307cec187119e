// The lines that come out of a worker. A thread of its own reads the pipe to the end, whether or
// not anybody asks for the lines: a worker whose pipe is full stands still on all its threads.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "host/process/clock.h"
#include "host/process/pipe.h"

namespace host {

struct Line {
    std::string text;  // without its line feed
    TimePoint at;      // when it was read
    bool whole;        // false: the output ended before the line feed
};

class LineStream {
  public:
    LineStream(Descriptor read_end, Pipe wake_up);
    ~LineStream();

    // The next line, waiting for it until the deadline; nothing when none came or the output has
    // ended.
    std::optional<Line> next(TimePoint deadline);

    // No further line can come, and all have been taken.
    bool ended();

    // Closes the reading end: whoever writes from now on gets EPIPE. Lines already read can still
    // be taken.
    void close();

  private:
    void drain(Descriptor read_end, Descriptor woken);
    void take(std::string_view bytes, TimePoint at);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Line> lines_;
    bool ended_ = false;

    std::string unfinished_;  // the drain thread only
    Descriptor wake_up_;      // closed to make the drain thread let go of the pipe
    std::thread drain_thread_;
};

}  // namespace host
