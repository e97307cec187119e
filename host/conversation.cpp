#include "host/conversation.h"

#include "host/events.h"

namespace tether {

using host::Clock;
using host::EndedBy;

namespace {

// The worker's own deadline for its shutdown is 3 s.
constexpr std::chrono::seconds time_to_follow_its_output{4};

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
    const auto now = Clock::now();
    if (!shown) {
        terminal_.show_line('>', typed, now);
    }
    record_.add('>', typed, now);
    worker_->send(typed);
}

void Conversation::heard(const std::string& line, host::TimePoint at) {
    terminal_.show_line('<', line, at);
    record_.add('<', line, at);
}

void Conversation::close_input() {
    worker_->close_input();
}

std::string Conversation::end() {
    if (worker_->output_ended()) {
        worker_->await_exit(host::after(time_to_follow_its_output));
    }
    const host::Ending ending = worker_->end();
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

void Conversation::close_output() {
    worker_->close_output();
}

}  // namespace tether
