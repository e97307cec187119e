// What the user sees: the lines of both directions with their times, and one line of progress below
// them that is redrawn in place on a terminal and printed once elsewhere.
#pragma once

#include <string>
#include <string_view>

#include "host/process/clock.h"

namespace tether {

class Terminal {
  public:
    explicit Terminal(host::TimePoint start);
    ~Terminal();

    // '>' to the worker, '<' from it. Of a line nothing moves the cursor: it may hold any bytes.
    void show_line(char direction, std::string_view text, host::TimePoint at);

    // An empty text ends the progress. The time counts from when a text was first shown.
    void show_progress(const std::string& text, host::TimePoint now);

    void show_text(std::string_view text);

    // What the worker wrote to its standard error, on this program's.
    void show_error_line(std::string_view text);

    // When the progress wants to be redrawn.
    host::TimePoint next_redraw(host::TimePoint now) const;

  private:
    void erase_progress();

    const host::TimePoint start_;
    const bool in_place_;
    const bool colored_;
    std::string progress_;
    host::TimePoint progress_since_;
    bool progress_drawn_ = false;
};

// "   1.234", the seconds from `start` to `at` in a column.
std::string time_column(host::TimePoint start, host::TimePoint at);

}  // namespace tether
