#include "tether/conversation/conversation.h"

#include "tether/conversation/events.h"

namespace tether {

using host::Clock;
using host::EndedBy;

namespace {

// The worker's own deadline for its shutdown is 3 s.
constexpr std::chrono::seconds time_to_follow_its_output{4};

// Nothing when it ended in order.
std::string what_was_wrong(const host::Ending& ending) {
    switch (ending.by) {
        case EndedBy::itself:
        case EndedBy::quit:
            return ending.exit.clean() ? "" : "the worker ended with " + describe(ending.exit);
        case EndedBy::closed_input:
            return "the worker did not hear the QUIT and ended only at the end of its input";
        case EndedBy::sigterm:
            return "the worker had to be ended with SIGTERM";
        case EndedBy::sigkill:
            return "the worker had to be killed";
    }
    return {};
}

}  // namespace

bool Conversation::start(const host::SpawnRequest& request, std::string& error) {
    worker_ = host::WorkerProcess::start(request, error);
    if (!worker_) {
        return false;
    }
    post_worker_lines(*worker_);
    return true;
}

void Conversation::say(const std::string& line) {
    pass_on(line, false);
}

void Conversation::pass_on(const std::string& typed, bool shown) {
    exchanged('>', typed, Clock::now(), shown);
    std::string why;
    if (!worker_->send(typed, why)) {
        terminal_.show_text("tether: " + why + "\n");
        record_.note(why, Clock::now());
    }
}

void Conversation::heard(const std::string& line, host::TimePoint at) {
    // What waits behind a flood may be millions of lines.
    if (!worker_->trouble().empty()) {
        ++lines_passed_over_;
        return;
    }
    exchanged('<', line, at, false);
}

void Conversation::exchanged(char direction, const std::string& line, host::TimePoint at,
                             bool shown) {
    if (!shown) {
        terminal_.show_line(direction, line, at);
    }
    const bool complete = record_.trouble().empty();
    record_.add(direction, line, at);
    if (complete && !record_.trouble().empty()) {
        terminal_.show_text("tether: the record ends here: " + record_.trouble() + "\n");
    }
}

void Conversation::close_input() {
    worker_->close_input();
    input_open_ = false;
}

void Conversation::interrupted(host::TimePoint at) {
    record_.note("interrupted", at);
}

void Conversation::end() {
    if (ending_) {
        return;
    }
    const auto deadline =
        worker_->output_ended() ? host::after(time_to_follow_its_output) : Clock::now();
    if (!worker_->await_exit(deadline) && input_open_) {
        exchanged('>', "QUIT", Clock::now(), false);
    }
    ending_ = worker_->end();
}

std::vector<std::string> Conversation::conclude() {
    end();
    std::vector<std::string> troubles;
    const std::string flood = worker_->trouble();
    const std::string trouble = flood.empty() ? what_was_wrong(*ending_) : flood;
    if (!trouble.empty()) {
        troubles.push_back(trouble);
    }
    if (lines_passed_over_ > 0) {
        record_.note(std::to_string(lines_passed_over_) + " lines of the flood are left out",
                     Clock::now());
    }
    record_.note(trouble.empty() ? "the worker ended in order" : trouble, Clock::now());
    if (!record_.trouble().empty()) {
        troubles.push_back("the record is not complete: " + record_.trouble());
    }
    return troubles;
}

void Conversation::close_output() {
    worker_->close_output();
}

}  // namespace tether
