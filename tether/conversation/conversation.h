// The conversation with one worker, as it goes out, comes in, is shown and is recorded.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/process/worker_process.h"
#include "tether/conversation/record.h"
#include "tether/conversation/terminal.h"

namespace tether {

class Conversation {
  public:
    Conversation(Terminal& terminal, Record& record) : terminal_(terminal), record_(record) {}

    // False and why when the worker cannot be started.
    bool start(const host::SpawnRequest& request, std::string& error);

    void say(const std::string& line);

    // What the user has typed: shown already where it was typed on a terminal.
    void pass_on(const std::string& typed, bool shown);

    // Shows and records a line that came, unless it is one of a flood.
    void heard(const std::string& line, host::TimePoint at);

    // No further commands: the worker carries out what it has been told and ends.
    void close_input();

    // The user wants to stop.
    void interrupted(host::TimePoint at);

    // Ends the worker, which may say something while it ends.
    void end();

    // Everything has been heard. What was wrong with the ending and the record, each a sentence.
    std::vector<std::string> conclude();

    // Lines that are still to come are lost.
    void close_output();

  private:
    void exchanged(char direction, const std::string& line, host::TimePoint at, bool shown);

    Terminal& terminal_;
    Record& record_;
    std::unique_ptr<host::WorkerProcess> worker_;
    bool input_open_ = true;
    std::uint64_t lines_passed_over_ = 0;
    std::optional<host::Ending> ending_;
};

}  // namespace tether
