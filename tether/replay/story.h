// A record as something to be played: what the host is expected to say, what the worker says after
// it, and how it ends.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tether/replay/pictures.h"

namespace replay {

using Milliseconds = std::chrono::milliseconds;

struct Step {
    enum class Kind { host_says, host_closes, worker_says, error_says, worker_closes };
    Kind kind{};
    Milliseconds at{};
    std::string text;
    bool whole = true;            // false: no line feed follows
    Fate fate = Fate::whole;      // of the file that the line reports
    std::size_t line_number = 0;  // in the record, from 1
};

// How the worker of a run ended.
struct Ending {
    enum class Kind {
        unknown,  // the record ends before
        status,   // as waitpid() gives it
        hangs,    // the host had to kill it
    };
    Kind kind = Kind::unknown;
    int wait_status = 0;
    Milliseconds at{};
};

// One worker, from its first line to its end.
struct Run {
    std::vector<Step> steps;
    Ending ending;
};

struct Story {
    std::vector<Run> runs;  // never empty
};

// Why a record of this format does not begin so; empty when it does.
std::string why_no_heading(std::string_view line);

// Nothing, and why in `error`, a sentence, when the text is no record.
std::optional<Story> read_story(std::string_view text, std::string& error);

}  // namespace replay
