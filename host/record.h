// A file with every line of both directions and its time.
#pragma once

#include <filesystem>
#include <fstream>
#include <string_view>

#include "host/clock.h"
#include "host/redaction.h"

namespace tether {

class Record {
  public:
    Record(host::TimePoint start, bool redacted) : start_(start), redacted_(redacted) {}

    // False when the file cannot be written.
    bool open(const std::filesystem::path& file);

    // Nothing happens unless a file is open.
    void add(char direction, std::string_view text, host::TimePoint at);

  private:
    const host::TimePoint start_;
    const bool redacted_;
    Redaction redaction_;
    std::ofstream file_;
};

}  // namespace tether
