// One direction of a tap: bytes go on as they come, and each end is closed when the other is.
#pragma once

#include <array>
#include <climits>
#include <cstddef>
#include <poll.h>
#include <string_view>

#include "host/process/pipe.h"

namespace tap {

// What a step came to.
struct Step {
    std::string_view bytes;     // that were read, good until the next step
    bool source_ended = false;  // no more comes; the sink has been closed
    bool sink_gone = false;     // nobody reads any more; the source has been closed
};

class OneWay {
  public:
    OneWay(host::Descriptor from, host::Descriptor to);

    // What poll() is to look for. Nothing is read while something waits to be written: a reader
    // that stands still is felt by the writer, as it would be without a tap.
    pollfd source() const;
    pollfd sink() const;

    // With what poll() has found.
    Step step(short at_source, short at_sink);

    // How many bytes wait to be written.
    std::size_t waiting() const {
        return end_ - begin_;
    }
    const host::Descriptor& to() const {
        return to_;
    }

  private:
    void write_some();

    host::Descriptor from_;
    host::Descriptor to_;
    // A pipe that has room has room for so much: no write waits, although the descriptors are
    // others' too and must be left in the mode that they are in.
    std::array<char, PIPE_BUF> buffer_{};
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool broken_ = false;
};

// What of this poll() looks for is there now.
short looked_at(pollfd wanted);

}  // namespace tap
