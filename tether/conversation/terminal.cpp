#include "tether/conversation/terminal.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "tether/live/session_words.h"

namespace tether {
namespace {

constexpr std::chrono::milliseconds redraw_every{100};

constexpr const char* plain = "\x1b[0m";
constexpr const char* faint = "\x1b[2m";

// Diagnostics step back, what the user waits for stands out.
const char* style_of(std::string_view line) {
    if (line.starts_with("LOG|")) {
        return faint;
    }
    if (line.starts_with("ERROR|") || line.starts_with("DISCONNECTED|")) {
        return "\x1b[33m";
    }
    if (line.starts_with("DOWNLOADED|")) {
        return "\x1b[32m";
    }
    return "";
}

// As users of other programs set it: empty, it asks for nothing.
bool color_is_refused() {
    const char* refused = std::getenv("NO_COLOR");
    return refused != nullptr && *refused != '\0';
}

void write_out(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

}  // namespace

Terminal::Terminal(host::TimePoint start)
    : start_(start),
      in_place_(isatty(STDOUT_FILENO) == 1),
      colored_(in_place_ && !color_is_refused()) {}

Terminal::~Terminal() {
    erase_progress();
}

void Terminal::show_line(char direction, std::string_view text, host::TimePoint at) {
    erase_progress();
    const std::string time = time_column(start_, at) + " " + direction + " ";
    if (colored_) {
        write_out(faint + time + plain + style_of(text) + shown(text) + plain + "\n");
    } else {
        write_out(time + shown(text) + "\n");
    }
}

void Terminal::show_progress(const std::string& text, host::TimePoint now) {
    const bool changed = text != progress_;
    if (changed) {
        progress_ = text;
        progress_since_ = now;
    }
    if (text.empty()) {
        erase_progress();
    } else if (in_place_) {
        write_out("\r         · " + text + " " + in_seconds(now - progress_since_, 1) + "\x1b[K");
        progress_drawn_ = true;
    } else if (changed) {
        write_out("         · " + text + "\n");
    }
}

void Terminal::show_text(std::string_view text) {
    erase_progress();
    write_out(text);
}

void Terminal::show_error_line(std::string_view text) {
    erase_progress();
    std::fputs((shown(text) + "\n").c_str(), stderr);
}

host::TimePoint Terminal::next_redraw(host::TimePoint now) const {
    return in_place_ && !progress_.empty() ? now + redraw_every : host::TimePoint::max();
}

void Terminal::erase_progress() {
    if (progress_drawn_) {
        write_out("\r\x1b[K");
        progress_drawn_ = false;
    }
}

std::string time_column(host::TimePoint start, host::TimePoint at) {
    char text[32];
    std::snprintf(text, sizeof text, "%8.3f", std::chrono::duration<double>(at - start).count());
    return text;
}

}  // namespace tether
