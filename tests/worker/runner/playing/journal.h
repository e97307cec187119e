// What was asked of the virtual camera, as its journal tells it.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/worker/runner/reading/transcript.h"

namespace transcript {

struct JournaledCall {
    double start = 0;  // seconds of the steady clock
    double end = 0;    // the start when the call has not come back
    std::string thread;
    std::string text;
    std::string result;
};

// Nothing when it is no line of a journal.
std::optional<JournaledCall> read_journaled_call(std::string_view line);

class Journal {
  public:
    explicit Journal(std::filesystem::path file) : file_(std::move(file)) {}

    // Reads on to the end of what has been written. False when a line is malformed or an SDK call
    // was made by another thread than the worker's main one.
    bool read_on(std::string& error);

    // The calls read so far and not yet let go: no callbacks, and reads only when they are wanted.
    std::vector<JournaledCall> calls(bool with_reads) const;

    // Lets go of the calls, which have been compared. The end of the last one is where the next
    // pause begins.
    void settle();
    double settled_end() const {
        return settled_end_;
    }

  private:
    std::filesystem::path file_;
    std::ifstream stream_;
    std::string unfinished_;
    std::vector<JournaledCall> calls_;
    double settled_end_ = 0;
};

// Empty when the calls are exactly the expected ones, otherwise what differs.
std::string compare(const std::vector<Call>& expected, const std::vector<JournaledCall>& made,
                    double end_before);

}  // namespace transcript
