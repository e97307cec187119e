#include "tether/live/wire_view.h"

namespace tether {

void WireView::show(const host::WireLine& line) {
    const host::TimePoint at = start_ + std::chrono::duration_cast<host::Duration>(line.at);
    const bool complete = record_.trouble().empty();
    if (line.direction == host::WireLine::Direction::error) {
        terminal_.show_error_line(line.text);
        record_.add_error(line.text, at);
    } else {
        const char direction = line.direction == host::WireLine::Direction::to_worker ? '>' : '<';
        if (shown_) {
            terminal_.show_line(direction, line.text, at);
        }
        record_.add(direction, line.text, at);
    }
    say_that_the_record_ends(complete);
}

void WireView::left_out(std::uint64_t count) {
    const std::string text = std::to_string(count) + " lines came too fast and are left out";
    if (shown_) {
        terminal_.show_text("         · " + text + "\n");
    }
    note(text);
}

void WireView::record(const host::Problem& problem) {
    const bool complete = record_.trouble().empty();
    record_.add_problem(problem, host::Clock::now());
    say_that_the_record_ends(complete);
}

void WireView::note(const std::string& text) {
    const bool complete = record_.trouble().empty();
    record_.note(text, host::Clock::now());
    say_that_the_record_ends(complete);
}

void WireView::say_that_the_record_ends(bool complete) {
    if (complete && !record_.trouble().empty()) {
        terminal_.show_text("tether: the record ends here: " + record_.trouble() + "\n");
    }
}

}  // namespace tether
