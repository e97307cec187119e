#include "tether/tap/session_rules.h"

#include <algorithm>
#include <utility>

#include "tether/tap/command_name.h"

namespace tap {

using tether::RecordLine;

namespace {

// A CAPTURE may cross a loss on its way.
constexpr std::chrono::seconds crossing{1};
// A host that ends the worker so soon after an error has answered it that way.
constexpr std::chrono::seconds time_for_an_answer{10};

std::vector<RecordLine> both(const std::optional<RecordLine>& before, const RecordLine& line) {
    return before ? std::vector<RecordLine>{*before, line} : std::vector<RecordLine>{line};
}

}  // namespace

void SessionRules::host_says(std::string_view command, const RecordLine& line) {
    if (command == "CONNECT") {
        on_connect(line);
    } else if (command == "DISCONNECT") {
        error_.reset();
        up_ = false;
        unsettle(line);
        remember(asked_, line);
    } else if (command == "CAPTURE") {
        on_capture(line);
    } else if (command == "PRIME") {
        remember(fences_, round_);
    } else if (up_ && (command == "SET_SAVE_DEST" || command == "SET_FILE_TYPE")) {
        unsettle(line);
    }
}

void SessionRules::on_connect(const RecordLine& line) {
    blamed_ = error_.has_value();
    if (blamed_) {
        complaints_.add(Fault::error_not_answered, line.at, both(error_, line));
        error_.reset();
    }
    if (!up_) {
        unsettle(line);
    }
    remember(asked_, line);
}

void SessionRules::on_capture(const RecordLine& line) {
    const bool crossed = lost_ && line.at - *lost_ < crossing;
    if (!crossed && (!up_ || !settled_)) {
        complaints_.add(Fault::capture_too_soon, line.at, both(unsettled_by_, line));
    }
}

void SessionRules::worker_says(const RecordLine& line) {
    const std::string_view text = line.text;
    if (text.starts_with("CONNECTED|")) {
        hear_connected(line);
    } else if (text.starts_with("DISCONNECTED|")) {
        hear_disconnected(line);
    } else if (text.starts_with("FILE_TYPE|")) {
        settled_ = true;
    } else if (text.starts_with("SAVE_DEST|")) {
        settled_ =
            settled_ || (unsettled_by_ && command_of(unsettled_by_->text) == "SET_SAVE_DEST");
    } else if (text == "PRIME_DONE|OK" && !fences_.empty()) {
        settled_ = settled_ || (up_ && fences_.front() == round_);
        fences_.pop_front();
    } else if (text.starts_with("ERROR|")) {
        hear_error(line);
    }
}

void SessionRules::hear_connected(const RecordLine& line) {
    std::optional<RecordLine> asked;
    if (is_opening()) {
        asked = asked_.front();
        asked_.pop_front();
    }
    if (line.text == "CONNECTED|already") {
        if (!std::exchange(blamed_, false)) {
            complaints_.add(Fault::connected_twice, line.at, both(asked, line));
        }
        return;
    }
    up_ = true;
    lost_.reset();
    error_.reset();
    // A PRIME that was sent while the camera was opening is answered before its settings are.
    ++round_;
}

void SessionRules::hear_disconnected(const RecordLine& line) {
    const auto answered = std::find_if(asked_.begin(), asked_.end(), [](const RecordLine& one) {
        return command_of(one.text) == "DISCONNECT";
    });
    if (answered != asked_.end()) {
        asked_.erase(asked_.begin(), answered + 1);
    }
    if (std::exchange(up_, false)) {
        lost_ = line.at;
        unsettle(line);
    }
}

void SessionRules::hear_error(const RecordLine& line) {
    const std::string_view text = line.text;
    if (up_ || !is_opening()) {
        return;
    }
    if (text.starts_with("ERROR|Could not open the camera (0x") ||
        text.starts_with("ERROR|Camera reported ")) {
        error_ = line;
        asked_.pop_front();
    } else if (text == "ERROR|Camera not detected" ||
               text.starts_with("ERROR|Could not open the camera (timeout)")) {
        asked_.pop_front();
    }
}

void SessionRules::over(std::chrono::milliseconds at) {
    if (error_ && at - error_->at >= time_for_an_answer) {
        complaints_.add(Fault::error_not_answered, at, {*error_});
    }
    error_.reset();
}

bool SessionRules::is_opening() const {
    return !asked_.empty() && command_of(asked_.front().text) == "CONNECT";
}

void SessionRules::unsettle(const RecordLine& by) {
    settled_ = false;
    ++round_;
    unsettled_by_ = by;
}

}  // namespace tap
