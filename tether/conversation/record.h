// A file with every line of both directions and its time, written line by line: docs/record.md.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "host/process/clock.h"
#include "host/process/pipe.h"
#include "host/values/problem.h"
#include "tether/conversation/redaction.h"

namespace tether {

class Record {
  public:
    Record(host::TimePoint start, bool redacted) : start_(start), redacted_(redacted) {}

    // Begins the file with the date, the system and this program's version. False, and why in
    // `trouble`, when it cannot be written or when something stands in it already: a record
    // replaces nothing.
    bool open(const std::filesystem::path& file);

    // '>' to the worker, '<' from it, '!' its standard error. Nothing happens unless a file is
    // open. `whole`: a line feed followed.
    void add(char direction, std::string_view text, host::TimePoint at, bool whole = true);

    // What the worker wrote on standard error: anything may stand in it.
    void add_error(std::string_view text, host::TimePoint at);

    // Who asked for the session: anything may stand in it.
    void add_client(std::string_view text, host::TimePoint at);

    // A problem by its code, with its text unless that may hold a path.
    void add_problem(const host::Problem& problem, host::TimePoint at);

    // A remark of tether's own.
    void note(std::string_view text, host::TimePoint at);

    // Of the open file; -1: none is.
    int descriptor() const {
        return file_.number();
    }

    // Why the record ends early; empty as long as it is complete.
    const std::string& trouble() const {
        return trouble_;
    }

  private:
    void write(char mark, std::string_view text, host::TimePoint at, bool whole = true);

    const host::TimePoint start_;
    const bool redacted_;
    Redaction redaction_;
    host::Descriptor file_;
    std::string trouble_;
};

}  // namespace tether
