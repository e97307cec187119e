// Notices that a host does not read what the worker says.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

#include "host/process/clock.h"

namespace tap {

// A host that reads in between for less than this has a hiccup.
constexpr std::chrono::seconds longest_stall{2};
// A tap that has looked no sooner was stopped itself, and its host perhaps with it.
constexpr std::chrono::seconds longest_between_looks{1};

// Takes no lock and looks at no clock.
class DrainGauge {
  public:
    enum class Change { none, stalled, drained };

    // `unread`: how much waits for the host, in whatever measure. To be called again and again as
    // long as anything does.
    Change look(std::size_t unread, host::TimePoint now);

    // Something has been written since the last look.
    void written(std::size_t unread, host::TimePoint now);

    // How long nothing has been read; before a look that finds that something was.
    std::chrono::milliseconds silence(host::TimePoint now) const {
        return std::chrono::round<std::chrono::milliseconds>(now - since_);
    }

    // Only then can the host be behind.
    bool wants_looks() const {
        return unread_ > 0;
    }

  private:
    std::size_t unread_ = 0;
    bool stalled_ = false;
    host::TimePoint since_{};
    host::TimePoint looked_{};
};

// What of the bytes written to a descriptor nobody has read, as far as the system says: 0 where it
// does not, such as for pipes on a Mac, where a stall is only seen once the pipe is full.
class UnreadBytes {
  public:
    explicit UnreadBytes(int descriptor);
    std::size_t count() const;

  private:
    int descriptor_;
    unsigned long request_ = 0;  // of ioctl(); 0: none
};

}  // namespace tap
