#include "tests/worker/runner/playing/report.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace transcript {
namespace {

constexpr std::size_t recent_lines = 12;

void add_indented(std::string& text, const std::string& lines) {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        text += "        " + line + "\n";
    }
}

}  // namespace

std::string passed_text(const std::string& name, host::Duration took) {
    char time[32];
    std::snprintf(time, sizeof time, "%6.2f s", std::chrono::duration<double>(took).count());
    return "ok      " + std::string(time) + "  " + name + "\n";
}

std::string failed_text(const std::string& name, const Failure& failure) {
    std::string text = "FAILED  " + name + "\n    " + failure.place.file.string() + ":" +
                       std::to_string(failure.place.line) + "\n    expected: " + failure.expected +
                       "\n    came:     " + failure.came + "\n";
    if (!failure.recent.empty()) {
        text += "    lines up to there:\n";
        const std::size_t shown = std::min(failure.recent.size(), recent_lines);
        for (auto line = failure.recent.end() - static_cast<std::ptrdiff_t>(shown);
             line != failure.recent.end(); ++line) {
            add_indented(text, *line);
        }
    }
    if (!failure.complaints.empty()) {
        text += "    standard error:\n";
        add_indented(text, failure.complaints);
    }
    return text;
}

}  // namespace transcript
