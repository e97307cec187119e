#include "host/brain/session/held_lines.h"

#include <algorithm>

#include "host/brain/text.h"
#include "host/brain/times.h"
#include "host/process/fields.h"

namespace host::brain {
namespace {

constexpr std::string_view landed = "LOG|[SONY] landed ";
constexpr std::string_view camera = "LOG|[SONY] camera \"";
constexpr std::string_view opening = "STATUS|Opening camera session";
constexpr std::string_view downloaded = "DOWNLOADED|";

// Whether the line reports a file with a line break in its path.
bool has_break(std::string_view line) {
    return begins_with(line, downloaded) && (line.find("%0A") != std::string_view::npos ||
                                             line.find("%0a") != std::string_view::npos);
}

bool ends_with_name(std::string_view path, std::string_view name) {
    if (path.size() < name.size() || path.substr(path.size() - name.size()) != name) {
        return false;
    }
    return path.size() == name.size() || path[path.size() - name.size() - 1] == '/';
}

}  // namespace

void HeldLines::hear(std::string_view text, Time at) {
    lines_.push_back({std::string(text), at});
    bytes_ += text.size();
    reports_with_breaks_ += has_break(text) ? 1 : 0;
}

std::optional<HeldLine> HeldLines::next(Time now) {
    while (!lines_.empty()) {
        const HeldLine& first = lines_.front();
        const bool of_file = begins_with(first.text, landed);
        if (!of_file && !begins_with(first.text, camera)) {
            return take_first();
        }
        if (of_file && its_report_is_next()) {
            take_first();
            continue;
        }
        const bool full = lines_.size() > limit::held_lines || bytes_ > limit::held_bytes;
        if (now < first.at + hold_ && !full && !ended_) {
            return std::nullopt;
        }
        const std::size_t name = of_file ? lines_of_file_name() : lines_of_camera_name();
        for (std::size_t count = 1 + name; count > 0; --count) {
            take_first();
        }
    }
    return std::nullopt;
}

HeldLine HeldLines::take_first() {
    HeldLine line = std::move(lines_.front());
    lines_.pop_front();
    bytes_ -= line.text.size();
    reports_with_breaks_ -= has_break(line.text) ? 1 : 0;
    return line;
}

// Nothing of the name stands between the two, and none of it can follow: what follows would make
// the report a part of the name, which has no slash in it, while a report has.
bool HeldLines::its_report_is_next() const {
    if (lines_.size() < 2 || reports_with_breaks_ > 0 || !begins_with(lines_[1].text, downloaded)) {
        return false;
    }
    const std::string path =
        unescape_field(std::string_view(lines_[1].text).substr(downloaded.size()));
    const std::string_view name = std::string_view(lines_.front().text).substr(landed.size());
    return !name.empty() && begins_with(path, "/") && ends_with_name(path, name);
}

// The most that any report explains: a report can be forged by a name too, but then that name's own
// report explains more.
std::size_t HeldLines::lines_of_file_name() const {
    std::size_t most = 0;
    if (reports_with_breaks_ == 0) {
        return most;
    }
    for (std::size_t report = 1; report < lines_.size(); ++report) {
        if (!has_break(lines_[report].text)) {
            continue;
        }
        const std::string path =
            unescape_field(std::string_view(lines_[report].text).substr(downloaded.size()));
        const auto breaks = static_cast<std::size_t>(std::count(path.begin(), path.end(), '\n'));
        if (breaks <= most) {
            continue;
        }
        const std::string_view last_part =
            std::string_view(path).substr(path.find_last_of('\n') + 1);
        std::string name = lines_.front().text.substr(landed.size());
        for (std::size_t count = 1; count < report && count <= breaks; ++count) {
            name += '\n' + lines_[count].text;
            if (count > most && lines_[count].text == last_part && ends_with_name(path, name)) {
                most = count;
            }
        }
    }
    return most;
}

// The last such line is the worker's own.
std::size_t HeldLines::lines_of_camera_name() const {
    for (std::size_t line = lines_.size() - 1; line > 0; --line) {
        if (lines_[line].text == opening) {
            return line - 1;
        }
    }
    return 0;
}

void HeldLines::forget() {
    lines_.clear();
    bytes_ = 0;
    reports_with_breaks_ = 0;
    ended_ = false;
}

Time HeldLines::wake_at() const {
    return lines_.empty() ? never : lines_.front().at + hold_;
}

}  // namespace host::brain
