// Whether a worker writes more than any sound one does: a loose cable makes thousands of lines a
// second, a program gone mad many more.
#pragma once

#include <cstddef>
#include <deque>

#include "host/values/time.h"

namespace host {

class FloodGauge {
  public:
    // So much has been read at that time.
    void add(std::size_t lines, std::size_t bytes, Time at);

    // What it wrote, as words; nullptr as long as it is no flood.
    const char* flood() const;

  private:
    // What was read within a hundredth of a second.
    struct Moment {
        Time begins{};
        std::size_t lines = 0;
        std::size_t bytes = 0;
    };

    std::deque<Moment> last_second_;
    std::size_t lines_ = 0;  // in last_second_
    std::size_t bytes_ = 0;
};

}  // namespace host
