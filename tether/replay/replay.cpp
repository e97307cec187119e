#include "tether/replay/replay.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <poll.h>
#include <signal.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "tether/replay/next_run.h"
#include "tether/replay/player.h"
#include "tether/tap/signals.h"

namespace replay {

using host::Clock;
using host::TimePoint;

namespace {

constexpr int status_of_a_difference = 3;
constexpr std::size_t longest_line = std::size_t{64} * 1024;
// Its text is a line as above; each byte may be an escape, which takes four.
constexpr std::size_t longest_record_line = 8 * longest_line;

// A record may say anything: a signal that stops a process would keep the host waiting for ever.
[[noreturn]] void end_as_recorded(int wait_status) {
    const int number = WIFSIGNALED(wait_status) ? WTERMSIG(wait_status) : 0;
    for (const int stops : {SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU}) {
        if (number == stops) {
            std::fprintf(stderr,
                         "tether replay: signal %d ends no process; ending with status %d\n",
                         number, 128 + number);
            std::_Exit(128 + number);
        }
    }
    tap::end_like(wait_status);
}

// Nothing, and why in `error`, as soon as it can be known to be no record.
std::optional<Story> read_file(const std::string& path, std::string& error) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        error = "cannot read " + path + ": it is a folder";
        return std::nullopt;
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = "cannot read " + path + ": " + std::strerror(errno);
        return std::nullopt;
    }
    std::string text;
    bool first = true;
    std::vector<char> line(longest_record_line);
    while (file.getline(line.data(), static_cast<std::streamsize>(line.size()))) {
        text.append(line.data(), static_cast<std::size_t>(file.gcount()) - (file.eof() ? 0 : 1));
        text += file.eof() ? "" : "\n";
        if (first) {
            error = why_no_heading(line.data());
        }
        if (!error.empty()) {
            error.insert(0, path + ": ");
            return std::nullopt;
        }
        first = false;
    }
    if (!file.eof()) {
        error = file.bad() ? "cannot read " + path + ": " + std::strerror(errno)
                           : path + ": a line is longer than any of a record";
        return std::nullopt;
    }
    auto story = read_story(text, error);
    error = story ? "" : path + ": " + error;
    return story;
}

// The player's hands.
class Stage {
  public:
    Stage(const Run& run, const Options& options)
        : options_(options), player_(run, options.fast, options.folder, actions(), Clock::now()) {}

    // Until the worker ends.
    [[noreturn]] void perform() {
        for (;;) {
            const TimePoint next = player_.play(Clock::now());
            std::array<pollfd, 2> wanted{
                {{input_open_ ? STDIN_FILENO : -1, POLLIN, 0}, signals_.arrival()}};
            const int wait = next == TimePoint::max() ? -1 : host::poll_timeout(next);
            if (poll(wanted.data(), wanted.size(), wait) <= 0) {
                continue;
            }
            if (wanted[0].revents != 0) {
                read_input();
            }
            if (wanted[1].revents != 0 && told_to_end()) {
                player_.end_of_input();
            }
        }
    }

  private:
    Actions actions() {
        return {
            [this](const Step& step, const std::string& text) { speak(step, text); },
            [](const std::string& path, Fate fate) {
                if (const std::string why = replay::make_picture(path, fate); !why.empty()) {
                    std::fprintf(stderr, "tether replay: %s\n", why.c_str());
                }
            },
            [this](std::size_t line_number, const std::string& sentence) {
                differs(line_number, sentence);
            },
            [](const Ending& ending) { end_as_recorded(ending.wait_status); },
        };
    }

    // By a signal that means QUIT.
    bool told_to_end() const {
        bool told = false;
        while (const int number = signals_.take()) {
            told = told || number == SIGHUP || number == SIGINT || number == SIGTERM;
        }
        return told;
    }

    // Waits until the host has room for more. One that does not read can end it all the same, as it
    // can end a worker.
    void await_room(int descriptor) const {
        std::array<pollfd, 2> wanted{{{descriptor, POLLOUT, 0}, signals_.arrival()}};
        while (poll(wanted.data(), wanted.size(), -1) < 0 || wanted[0].revents == 0) {
            if (wanted[1].revents != 0 && told_to_end()) {
                std::_Exit(0);
            }
        }
    }

    void speak(const Step& step, const std::string& text) const {
        if (step.kind == Step::Kind::worker_closes) {
            ::close(STDOUT_FILENO);
            return;
        }
        const std::string bytes = text + (step.whole ? "\n" : "");
        const int descriptor = step.kind == Step::Kind::error_says ? STDERR_FILENO : STDOUT_FILENO;
        std::size_t written = 0;
        while (written < bytes.size()) {
            await_room(descriptor);
            // A pipe that has room has room for so much.
            const ssize_t count = ::write(descriptor, bytes.data() + written,
                                          std::min<std::size_t>(bytes.size() - written, PIPE_BUF));
            if (count < 0 && errno != EINTR) {
                return;  // as a worker does whose host no longer reads
            }
            written += static_cast<std::size_t>(count < 0 ? 0 : count);
        }
    }

    void differs(std::size_t line_number, const std::string& sentence) const {
        const std::string place =
            options_.record + (line_number > 0 ? ":" + std::to_string(line_number) : "");
        std::fprintf(stderr, "tether replay: %s: %s\n", place.c_str(), sentence.c_str());
        if (options_.strict) {
            std::_Exit(status_of_a_difference);
        }
    }

    void read_input() {
        std::array<char, 4096> bytes;
        const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
        if (count > 0) {
            take({bytes.data(), static_cast<std::size_t>(count)});
        } else if (count == 0 || errno != EINTR) {
            input_open_ = false;
            // A worker takes a line that has not ended for one that has.
            if (!begun_.empty()) {
                player_.hear(begun_);
            }
            player_.end_of_input();
        }
    }

    void take(std::string_view bytes) {
        for (std::size_t end; (end = bytes.find('\n')) != std::string_view::npos;) {
            player_.hear(begun_.append(bytes.substr(0, end)));
            begun_.clear();
            bytes.remove_prefix(end + 1);
        }
        // Nothing that long is expected.
        begun_.append(bytes.substr(0, longest_line - std::min(begun_.size(), longest_line)));
    }

    const Options& options_;
    const tap::Signals signals_;
    std::string begun_;  // a line of the host's
    bool input_open_ = true;
    Player player_;
};

}  // namespace

std::string carry_out(const Options& options) {
    std::string error;
    const auto story = read_file(options.record, error);
    if (!story) {
        return error;
    }
    const std::size_t count = story->runs.size();
    if (options.run > count) {
        return options.record + " has " + std::to_string(count) + " workers, and no number " +
               std::to_string(options.run);
    }
    const std::size_t number =
        options.run > 0
            ? options.run - 1
            : std::min<std::size_t>(count > 1 ? count_start(options.record) : 0, count - 1);
    Stage(story->runs[number], options).perform();
}

}  // namespace replay
