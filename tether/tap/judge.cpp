#include "tether/tap/judge.h"

#include <signal.h>
#include <utility>

#include "host/process/command.h"
#include "tether/tap/command_name.h"

namespace tap {

using tether::RecordLine;

namespace {

// What a worker that hangs must be given a rung, and a little less: clocks are read at both ends.
constexpr std::chrono::milliseconds shortest_rung{900};

}  // namespace

void Judge::host_says(const RecordLine& line) {
    look_at_bytes(line);
    const std::string command = command_of(line.text);
    if (command.starts_with("__")) {
        complaints_.add(Fault::internal_command, line.at, {line});
    }
    session_.host_says(command, line);
    shots_.host_says(command, line);
    if (command == "QUIT") {
        quit_ = quit_.value_or(line.at);
        session_.over(line.at);
    }
}

void Judge::look_at_bytes(const RecordLine& line) {
    if (line.text.size() > host::longest_command) {
        complaints_.add(Fault::line_too_long, line.at, {line});
    }
    const std::string_view text = line.text;
    // Those at the end are dropped.
    const std::string_view kept = text.substr(0, text.find_last_not_of('\r') + 1);
    if (text.find('\0') != std::string_view::npos || kept.find('\r') != std::string_view::npos) {
        complaints_.add(Fault::odd_byte, line.at, {line});
    }
}

void Judge::worker_says(const RecordLine& line) {
    last_of_worker_ = line;
    session_.worker_says(line);
    shots_.worker_says(line);
}

void Judge::input_ended(const RecordLine& remark) {
    input_ended_ = remark.at;
    shots_.input_ended(remark);
    session_.over(remark.at);
}

void Judge::signalled(int number, const RecordLine& remark) {
    if (number != SIGTERM) {
        return;
    }
    if (!quit_ && !input_ended_) {
        complaints_.add(Fault::ladder_left_out, remark.at, {remark});
    }
    terminated_ = terminated_.value_or(remark.at);
}

void Judge::stalled(const RecordLine& remark) {
    std::vector<RecordLine> lines{remark};
    if (last_of_worker_) {
        lines.insert(lines.begin(), *last_of_worker_);
    }
    complaints_.add(Fault::output_not_drained, remark.at, std::move(lines));
}

bool Judge::ladder_was_climbed(std::chrono::milliseconds now) const {
    return quit_ && input_ended_ && terminated_ && *input_ended_ - *quit_ >= shortest_rung &&
           *terminated_ - *input_ended_ >= shortest_rung && now - *terminated_ >= shortest_rung;
}

void Judge::killed(const RecordLine& remark) {
    if (!ladder_was_climbed(remark.at)) {
        complaints_.add(Fault::ladder_left_out, remark.at, {remark});
    }
}

void Judge::worker_ended(std::chrono::milliseconds at) {
    session_.over(at);
}

}  // namespace tap
