#include "host/brain/session/held_lines.h"

#include <algorithm>
#include <utility>

#include "host/brain/times.h"
#include "host/process/fields.h"

namespace host::brain {
namespace {

constexpr std::string_view landed = "LOG|[SONY] landed ";
constexpr std::string_view camera = "LOG|[SONY] camera \"";
constexpr std::string_view opening = "STATUS|Opening camera session";
constexpr std::string_view downloaded = "DOWNLOADED|";

// The path of a line that reports a file with a line break in it; empty for any other.
std::string path_with_break(std::string_view line) {
    const bool has_break =
        line.starts_with(downloaded) &&
        (line.find("%0A") != std::string_view::npos || line.find("%0a") != std::string_view::npos);
    std::string path = has_break ? unescape_field(line.substr(downloaded.size())) : "";
    return path.size() <= limit::path ? path : "";
}

bool ends_with_name(std::string_view path, std::string_view name) {
    if (path.size() < name.size() || path.substr(path.size() - name.size()) != name) {
        return false;
    }
    return path.size() == name.size() || path[path.size() - name.size() - 1] == '/';
}

}  // namespace

void HeldLines::hear(std::string_view text, Time at) {
    Held held{{std::string(text), at}, path_with_break(text)};
    bytes_ += text.size();
    reports_with_breaks_ += held.reported.empty() ? 0 : 1;
    lines_.push_back(std::move(held));
}

std::optional<HeldLine> HeldLines::next(Time now) {
    while (!lines_.empty()) {
        const HeldLine& first = lines_.front().line;
        const bool of_file = first.text.starts_with(landed);
        if (!of_file && !first.text.starts_with(camera)) {
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
    Held first = std::move(lines_.front());
    lines_.pop_front();
    bytes_ -= first.line.text.size();
    reports_with_breaks_ -= first.reported.empty() ? 0 : 1;
    return std::move(first.line);
}

// Nothing of the name stands between the two, and none of it can follow: what follows would make
// the report a part of the name, which has no slash in it, while a report has.
bool HeldLines::its_report_is_next() const {
    if (lines_.size() < 2 || reports_with_breaks_ > 0 ||
        !lines_[1].line.text.starts_with(downloaded)) {
        return false;
    }
    const std::string path =
        unescape_field(std::string_view(lines_[1].line.text).substr(downloaded.size()));
    const std::string_view name = std::string_view(lines_.front().line.text).substr(landed.size());
    return !name.empty() && path.starts_with("/") && ends_with_name(path, name);
}

// The most that any report explains: a report can be forged by a name too, but then that name's own
// report explains more. Thousands of such lines may come while one is held, so only the reports
// that can matter are looked at.
std::size_t HeldLines::lines_of_file_name() const {
    std::size_t most = 0;
    std::size_t left = std::min(reports_with_breaks_, limit::reports_of_name);
    for (std::size_t line = 1; left > 0; ++line) {
        if (!lines_[line].reported.empty()) {
            --left;
            most = std::max(most, lines_explained(line));
        }
    }
    return most;
}

// How many of the lines behind the log line the file's name in this report has; 0: it is another
// file's. Within the name the log line ends at a break, and before it the name begins.
std::size_t HeldLines::lines_explained(std::size_t report) const {
    const std::string_view path = lines_[report].reported;
    const std::string_view name = std::string_view(lines_.front().line.text).substr(landed.size());
    if (name.starts_with("/")) {
        return lines_in(path, report);
    }
    const std::size_t first = path.size() - std::min(path.size(), limit::file_name);
    for (std::size_t end = path.find('\n', first + name.size()); end != std::string_view::npos;
         end = path.find('\n', end + 1)) {
        const std::size_t begin = end - name.size();
        if ((begin == 0 || path[begin - 1] == '/') && path.substr(begin, name.size()) == name) {
            const std::size_t lines = lines_in(path.substr(begin), report);
            if (lines > 0) {
                return lines;
            }
        }
    }
    return 0;
}

// How many lines the name has behind its first one; 0: what follows the log line is not its rest.
std::size_t HeldLines::lines_in(std::string_view name, std::size_t report) const {
    std::string_view part = std::string_view(lines_.front().line.text).substr(landed.size());
    for (std::size_t line = 0;; part = lines_[line].line.text) {
        if (!name.starts_with(part)) {
            return 0;
        }
        name.remove_prefix(part.size());
        if (name.empty()) {
            return line;
        }
        if (name.front() != '\n' || ++line == report) {
            return 0;
        }
        name.remove_prefix(1);
    }
}

// The last such line is the worker's own.
std::size_t HeldLines::lines_of_camera_name() const {
    for (std::size_t line = lines_.size() - 1; line > 0; --line) {
        if (lines_[line].line.text == opening) {
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
    return lines_.empty() ? never : lines_.front().line.at + hold_;
}

}  // namespace host::brain
