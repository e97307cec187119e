// What follows a log line with somebody else's words in it is held until it is known which lines
// are the rest of those words: a line break splits the log line, and what comes behind it can look
// like any line. Of a file that landed, the report tells, where breaks are escaped: mostly it is
// the very next line, and nothing waits. Of a camera, the line with which the worker begins to open
// one: until then it says nothing else.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "host/values/time.h"

namespace host::brain {

struct HeldLine {
    std::string text;
    Time at{};  // when it was read
};

class HeldLines {
  public:
    explicit HeldLines(Time hold) : hold_(hold) {}

    void hear(std::string_view text, Time at);

    // The next line that the worker itself has written; nothing while that is open.
    std::optional<HeldLine> next(Time now);

    // No more lines will come: what is held is judged by what is there.
    void no_more() {
        ended_ = true;
    }

    void forget();

    // When the first one that is held is let go.
    Time wake_at() const;

  private:
    struct Held {
        HeldLine line;
        std::string reported;  // the path, when the line reports a file with a line break in it
    };

    // The first line is about a file that landed, and the second one reports it.
    bool its_report_is_next() const;
    // How many of the lines behind the first, which is a log line, belong to its name.
    std::size_t lines_of_file_name() const;
    std::size_t lines_explained(std::size_t report) const;
    std::size_t lines_in(std::string_view name, std::size_t report) const;
    std::size_t lines_of_camera_name() const;
    HeldLine take_first();

    Time hold_;
    std::deque<Held> lines_;
    std::size_t bytes_ = 0;
    std::size_t reports_with_breaks_ = 0;
    bool ended_ = false;
};

}  // namespace host::brain
