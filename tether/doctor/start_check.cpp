// The worker as a host starts it, until it says that it is ready.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <signal.h>
#include <sstream>
#include <unistd.h>

#include "tether/doctor/checks.h"
#include "tether/doctor/regular_file.h"
#include "tether/live/session_words.h"

namespace doctor {

using host::Clock;
using tether::in_seconds;

namespace {

constexpr std::string_view banner = "CPP_WORKER|START ";
constexpr std::string_view sdk_version = "LOG|[SONY] Camera Remote SDK ";
constexpr std::string_view ready = "READY|OK";
const std::string writes_without_end = "the worker writes without end";
constexpr int most_complaints = 6;
constexpr std::size_t longest_complaints = 2000;  // bytes

// Bytes, of either output, beyond anything that a worker says until it is ready or while it leaves.
constexpr std::uint64_t most_said = std::uint64_t{1} << 20;
// How often is looked at how much standard error has grown.
constexpr std::chrono::milliseconds between_looks{50};

// Takes what the worker writes to standard error; nothing keeps it where no file can be made.
class ErrorFile {
  public:
    ErrorFile() {
        std::error_code failure;
        std::string path = std::filesystem::temp_directory_path(failure) / "tether-doctor-XXXXXX";
        const int file = failure ? -1 : mkstemp(path.data());
        if (file >= 0) {
            close(file);
            path_ = path;
        }
    }
    ~ErrorFile() {
        if (path_ != nowhere) {
            unlink(path_.c_str());
        }
    }
    ErrorFile(const ErrorFile&) = delete;
    ErrorFile& operator=(const ErrorFile&) = delete;

    const std::string& path() const {
        return path_;
    }

    // The first lines: loaders say what is missing, then why at length.
    std::string complaints() const {
        if (path_ == nowhere) {
            return "What it wrote to standard error is lost: no temporary file can be made.";
        }
        std::string why;
        std::string start(longest_complaints, '\0');
        const auto file = RegularFile::open(path_, why);
        start.resize(file ? file->read(0, start.data(), start.size()) : 0);
        std::istringstream stream(start);
        std::string text;
        std::string line;
        for (int count = 0; count < most_complaints && std::getline(stream, line); ++count) {
            text += (text.empty() ? "" : "\n") + line;
        }
        return text.empty() ? "It wrote nothing to standard error." : text;
    }

    bool is_flooded() const {
        std::error_code failure;
        const auto size = std::filesystem::file_size(path_, failure);
        return !failure && size > most_said;
    }

  private:
    static constexpr const char* nowhere = "/dev/null";

    std::string path_ = nowhere;
};

// Hears a worker out, as long as it does not say too much: one that writes without end would fill
// the memory with lines and the disk with complaints.
class Listener {
  public:
    Listener(host::WorkerProcess& worker, const ErrorFile& errors)
        : worker_(worker), errors_(errors) {}

    // Nothing when there is no more: the output has ended, it is time or it was too much.
    std::optional<std::string> next_line(host::TimePoint deadline) {
        while (!flooded() && Clock::now() < deadline) {
            auto line = worker_.next_line(next_look(deadline));
            if (line) {
                said_ += line->text.size() + 1;
                return std::move(line->text);
            }
            if (worker_.output_ended()) {
                break;
            }
        }
        return std::nullopt;
    }

    // Nothing when it still runs then, or said too much.
    std::optional<host::Exit> await_exit(host::TimePoint deadline) {
        while (next_line(deadline)) {}
        while (!flooded() && Clock::now() < deadline) {
            if (const auto exit = worker_.await_exit(next_look(deadline))) {
                return exit;
            }
        }
        return std::nullopt;
    }

    bool flooded() {
        if (const auto now = Clock::now(); now >= looked_ + between_looks) {
            looked_ = now;
            errors_flooded_ = errors_.is_flooded();
        }
        return said_ > most_said || errors_flooded_;
    }

  private:
    static host::TimePoint next_look(host::TimePoint deadline) {
        return std::min(deadline, host::after(between_looks));
    }

    host::WorkerProcess& worker_;
    const ErrorFile& errors_;
    std::uint64_t said_ = 0;
    bool errors_flooded_ = false;
    host::TimePoint looked_{};
};

struct Heard {
    bool ready = false;
    std::string wrong;  // the first line when it is no worker's, or the worker's own error
    std::string worker;
    std::string sdk;
};

Heard listen(Listener& worker, host::TimePoint deadline) {
    Heard heard;
    while (const auto line = worker.next_line(deadline)) {
        const std::string& text = *line;
        if (heard.worker.empty() && !text.starts_with(banner)) {
            heard.wrong = text;
            break;
        }
        if (text.starts_with(banner)) {
            heard.worker = text.substr(banner.size());
        } else if (text.starts_with(sdk_version)) {
            heard.sdk = text.substr(sdk_version.size());
        } else if (text.starts_with("ERROR|")) {
            heard.wrong = text;
        } else if (text == ready) {
            heard.ready = true;
            break;
        }
    }
    return heard;
}

// What is wrong with a worker that does not get ready; nothing of it is left to be ended in order.
std::string why_not_ready(host::WorkerProcess& worker, Listener& listener, const Heard& heard,
                          const StartTimes& times) {
    if (!heard.wrong.empty()) {
        return "the worker says \"" + heard.wrong + "\"";
    }
    if (listener.flooded()) {
        return writes_without_end;
    }
    if (std::string trouble = worker.trouble(); !trouble.empty()) {
        return trouble;
    }
    if (worker.output_ended()) {
        if (const auto exit = listener.await_exit(host::after(times.end.after_quit))) {
            return "the worker ended with " + describe(*exit) + " before it was ready";
        }
        if (!listener.flooded()) {
            return "the worker closes its output before it is ready";
        }
    }
    return listener.flooded() ? writes_without_end
                              : "the worker is not ready after " + in_seconds(times.until_ready);
}

// What is wrong with how a worker leaves that has got ready; empty when it leaves as it should.
std::string why_not_gone(host::WorkerProcess& worker, Listener& listener, const StartTimes& times) {
    if (worker.send("QUIT")) {
        const auto exit = listener.await_exit(host::after(times.end.after_quit));
        if (exit && exit->clean()) {
            return {};
        }
    }
    if (std::string trouble = worker.trouble(); !listener.flooded() && !trouble.empty()) {
        return trouble;
    }
    return listener.flooded() ? writes_without_end
                              : "the worker gets ready, but does not end in order at a QUIT";
}

}  // namespace

Finding worker_starts(const std::filesystem::path& worker, const StartTimes& times) {
    const ErrorFile errors;
    const auto start = Clock::now();
    std::string why;
    const auto process = host::WorkerProcess::start({worker, {}, {}, errors.path()}, why);
    if (!process) {
        return failure("start: " + why, "Is it built for this system and processor?");
    }
    Listener listener(*process, errors);
    const Heard heard = listen(listener, start + times.until_ready);
    const auto took = Clock::now() - start;
    const std::string wrong = heard.ready ? why_not_gone(*process, listener, times)
                                          : why_not_ready(*process, listener, heard, times);
    if (!wrong.empty()) {
        process->signal(SIGKILL);
        return failure("start: " + wrong, errors.complaints());
    }
    return ok("start: ready after " + in_seconds(took) + ", " + heard.worker + ", SDK " +
              (heard.sdk.empty() ? "without a version" : heard.sdk));
}

}  // namespace doctor
