// What has come out of a worker and nobody has taken yet. Kept as the bytes that came, so that a
// flood of short lines takes no more memory than one of long lines. Takes no lock of its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "host/process/clock.h"

namespace host {

struct Line {
    std::string text;  // without its line feed
    TimePoint at;      // when it was read
    bool whole;        // false: the output ended before the line feed
};

// A worker that passes one of these is broken, and nothing that it would still say is waited for.
struct OutputLimits {
    std::size_t line = std::size_t{64} * 1024;           // bytes of one line, without its line feed
    std::size_t backlog = std::size_t{8} * 1024 * 1024;  // bytes that nobody has taken yet
};

class Backlog {
  public:
    explicit Backlog(const OutputLimits& limits) : limits_(limits) {}

    // False, and why in trouble(), when they pass a limit: a line that is too long is dropped and
    // so is what follows it; the lines before it can still be taken. Nothing may be added after.
    bool add(std::string_view bytes, TimePoint at);

    // No further bytes: a line without its line feed can now be taken too.
    void finish(TimePoint at);

    bool has_line() const {
        return whole_lines_ > 0 || (finished_ && taken_ < bytes_.size());
    }

    // The oldest line; nothing when there is none.
    std::optional<Line> take();

    // Why bytes were refused, a sentence about the worker; empty when none were.
    const std::string& trouble() const {
        return trouble_;
    }

  private:
    // Some whole lines were read at one time.
    struct Reading {
        std::uint64_t end;  // how many bytes had ever been added when the last of these lines ended
        TimePoint at;
    };

    TimePoint time_of_line_ending_at(std::uint64_t end);
    void forget_what_was_taken();

    const OutputLimits limits_;
    std::string bytes_;
    std::size_t taken_ = 0;        // of bytes_
    std::size_t unfinished_ = 0;   // at the end of bytes_, without a line feed
    std::uint64_t forgotten_ = 0;  // bytes that stood before bytes_
    std::uint64_t whole_lines_ = 0;
    std::deque<Reading> readings_;
    std::optional<TimePoint> finished_;
    std::string trouble_;
};

}  // namespace host
