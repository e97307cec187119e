// The worker as a host starts it, until it says that it is ready.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <signal.h>
#include <unistd.h>

#include "tether/doctor/checks.h"

namespace doctor {

using host::Clock;
using host::EndedBy;

namespace {

constexpr std::string_view banner = "CPP_WORKER|START ";
constexpr std::string_view sdk_version = "LOG|[SONY] Camera Remote SDK ";
constexpr std::string_view ready = "READY|OK";
constexpr int most_complaints = 6;

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
        std::ifstream stream(path_);
        std::string text;
        std::string line;
        for (int count = 0; count < most_complaints && std::getline(stream, line); ++count) {
            text += (text.empty() ? "" : "\n") + line;
        }
        return text.empty() ? "It wrote nothing to standard error." : text;
    }

  private:
    static constexpr const char* nowhere = "/dev/null";

    std::string path_ = nowhere;
};

struct Heard {
    bool ready = false;
    std::string wrong;  // the first line when it is no worker's, or the worker's own error
    std::string worker;
    std::string sdk;
};

Heard listen(host::WorkerProcess& worker, host::TimePoint deadline) {
    Heard heard;
    while (Clock::now() < deadline) {
        const auto line = worker.next_line(deadline);
        if (!line) {
            break;
        }
        const std::string& text = line->text;
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

std::string in_seconds(host::Duration duration) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", std::chrono::duration<double>(duration).count());
    return text;
}

Finding not_ready(host::WorkerProcess& worker, const Heard& heard, const std::string& complaints,
                  const StartTimes& times) {
    if (const std::string trouble = worker.trouble(); !trouble.empty()) {
        return failure("start: " + trouble, complaints);
    }
    if (!heard.wrong.empty()) {
        worker.signal(SIGKILL);
        return failure("start: the worker says \"" + heard.wrong + "\"", complaints);
    }
    if (!worker.output_ended()) {
        worker.signal(SIGKILL);
        return failure("start: the worker is not ready after " + in_seconds(times.until_ready),
                       complaints);
    }
    const host::Ending ending = worker.end(times.end);
    return failure("start: the worker ended with " + describe(ending.exit) + " before it was ready",
                   complaints);
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
    const Heard heard = listen(*process, start + times.until_ready);
    const auto took = Clock::now() - start;
    if (!heard.ready) {
        return not_ready(*process, heard, errors.complaints(), times);
    }
    const host::Ending ending = process->end(times.end);
    if (ending.by != EndedBy::quit || !ending.exit.clean()) {
        return failure("start: the worker gets ready, but does not end in order at a QUIT",
                       errors.complaints());
    }
    return ok("start: ready after " + in_seconds(took) + ", " + heard.worker + ", SDK " +
              (heard.sdk.empty() ? "without a version" : heard.sdk));
}

}  // namespace doctor
