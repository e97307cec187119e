#include "tether/tap/shot_rules.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "host/process/fields.h"

namespace tap {

using tether::RecordLine;

namespace {

// What a shot has for its files; then it brings none.
constexpr std::chrono::seconds time_for_files{20};

std::string argument_of(std::string_view line) {
    const std::size_t separator = line.find('|');
    return std::string(separator == std::string_view::npos ? "" : line.substr(separator + 1));
}

// However it is spelt. Both as on the wire.
bool are_the_same(const std::string& one, const std::string& other) {
    std::error_code missing;
    return one == other || std::filesystem::equivalent(host::unescape_field(one),
                                                       host::unescape_field(other), missing);
}

}  // namespace

ShotRules::ShotRules(Complaints& complaints, std::string folder)
    : complaints_(complaints), folder_(std::move(folder)) {}

void ShotRules::host_says(std::string_view command, const RecordLine& line) {
    forget_what_came_to_nothing(line.at);
    if (command == "CAPTURE") {
        if (!to_card_) {
            remember(out_, Shot{line, line.at, false, pairs_ ? 2 : 1});
        }
    } else if (command == "SET_DOWNLOAD_DIR") {
        std::string folder = argument_of(line.text);
        if (!out_.empty() && !folder_.empty() && !are_the_same(folder, folder_)) {
            complaints_.add(Fault::folder_changed, line.at, {out_.front().capture, line});
        }
        folder_ = std::move(folder);
    } else if (command == "QUIT" || command == "DISCONNECT") {
        over_ = over_ || command == "QUIT";
        end_session(line);
    }
}

void ShotRules::worker_says(const RecordLine& line) {
    const std::string_view text = line.text;
    if (text.starts_with("REMOTE_CAPTURED|")) {
        fired(line.at);
    } else if (text.starts_with("DOWNLOADED|")) {
        file_came();
    } else if (text.starts_with("SAVE_DEST|")) {
        to_card_ = text == "SAVE_DEST|card";
    } else if (text.starts_with("FILE_TYPE|")) {
        pairs_ = text == "FILE_TYPE|both";
    } else if (text.starts_with("DISCONNECTED|") || text == "ERROR|Camera not connected" ||
               text.starts_with("LOG|[SONY] warning ")) {
        // No session, or a camera that gives a reason for bringing nothing: nothing is on its way
        // for certain.
        out_.clear();
    }
}

void ShotRules::input_ended(const RecordLine& remark) {
    forget_what_came_to_nothing(remark.at);
    if (!std::exchange(over_, true)) {
        end_session(remark);
    }
}

void ShotRules::end_session(const RecordLine& line) {
    if (!out_.empty()) {
        complaints_.add(Fault::files_left_behind, line.at, {out_.front().capture, line});
    }
    out_.clear();
}

void ShotRules::fired(std::chrono::milliseconds at) {
    const auto shot =
        std::find_if(out_.begin(), out_.end(), [](const Shot& one) { return !one.fired; });
    if (shot != out_.end()) {
        shot->fired = true;
        shot->since = at;
    }
}

void ShotRules::file_came() {
    if (!out_.empty() && --out_.front().due == 0) {
        out_.pop_front();
    }
}

void ShotRules::forget_what_came_to_nothing(std::chrono::milliseconds now) {
    std::erase_if(out_, [now](const Shot& shot) { return now - shot.since >= time_for_files; });
}

}  // namespace tap
