#include "host/camera/running_worker.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>
#include <utility>

namespace host {
namespace {

constexpr std::size_t longest_line = std::size_t{64} * 1024;

// What waits behind a full pipe, which holds as much again.
constexpr std::size_t most_unsent = std::size_t{64} * 1024;

}  // namespace

std::unique_ptr<RunningWorker> RunningWorker::start(const CameraOptions& options,
                                                    const brain::StartWorker& what,
                                                    const std::shared_ptr<Inbox>& inbox,
                                                    std::string& why) {
    std::optional<Pipe> input = make_pipe();
    std::optional<Pipe> output = make_pipe();
    std::optional<Pipe> error = make_pipe();
    if (!input || !output || !error) {
        why = std::string("cannot make a pipe: ") + std::strerror(errno);
        return nullptr;
    }
    // One of its own: whose number that was may close it while the program is still being loaded.
    Descriptor lock(fcntl(what.lock_descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    SpawnRequest request;
    request.executable = options.worker;
    request.environment = options.environment;
    ChildEnds ends{std::move(input->read_end), std::move(output->write_end),
                   std::move(error->write_end), std::move(lock)};
    std::unique_ptr<RunningWorker> worker(
        new RunningWorker(what.run, std::move(*input), std::move(*output), std::move(*error)));
    worker->child_ = Child::start(what.run, std::move(request), std::move(ends), inbox);
    return worker;
}

RunningWorker::RunningWorker(std::string run, Pipe input, Pipe output, Pipe error)
    : run_(std::move(run)),
      input_(std::move(input.write_end)),
      output_(std::move(output.read_end)),
      error_(std::move(error.read_end)),
      lines_(longest_line),
      error_lines_(longest_line) {
    for (const Descriptor* end : {&input_, &output_, &error_}) {
        make_non_blocking(*end);
    }
}

RunningWorker::~RunningWorker() {
    child_->give_up();
}

// The camera's thread has SIGPIPE blocked.
bool RunningWorker::say(std::string_view line) {
    if (!input_.is_open()) {
        return true;  // that it no longer reads is seen by its silence
    }
    if (unsent_.size() + line.size() + 1 > most_unsent) {
        return false;
    }
    unsent_.append(line).append("\n");
    write_on();
    return true;
}

void RunningWorker::write_on() {
    while (input_.is_open() && !unsent_.empty()) {
        const ssize_t written = write(input_.number(), unsent_.data(), unsent_.size());
        if (written >= 0) {
            unsent_.erase(0, static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            return;
        } else {
            input_.close();
        }
    }
}

void RunningWorker::add_to(std::vector<pollfd>& sources) const {
    if (started_) {
        for (const Descriptor* pipe : {&output_, &error_}) {
            if (pipe->is_open()) {
                sources.push_back({pipe->number(), POLLIN, {}});
            }
        }
    }
    if (input_.is_open() && !unsent_.empty()) {
        sources.push_back({input_.number(), POLLOUT, {}});
    }
}

// What it wrote on standard error before a line of output is told before that line: a camera that
// announces itself as virtual is known as such when the worker says that it is ready. So the output
// is read first, and the rest second.
bool RunningWorker::read(Time at, const Ear& ear) {
    if (!started_) {
        return false;
    }
    const std::string_view output = read(output_, buffer_);
    const std::string_view error = read(error_, error_buffer_);
    hear(error, error_lines_, at, ear.error, [] {});
    hear(output, lines_, at, ear.line, ear.too_long);
    return !output.empty() || !error.empty();
}

std::string_view RunningWorker::read(Descriptor& pipe, Buffer& buffer) {
    if (!pipe.is_open()) {
        return {};
    }
    const ssize_t count = ::read(pipe.number(), buffer.data(), buffer.size());
    if (count == 0) {
        pipe.close();
    }
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

// Once it floods it is read on, so that it can end, and no more is made of it: what it brought is
// found in its folder.
template <typename OnLine, typename OnTooLong>
void RunningWorker::hear(std::string_view bytes, LineCutter& cutter, Time at, const OnLine& line,
                         const OnTooLong& too_long) {
    if (flooded_ || bytes.empty()) {
        return;
    }
    std::size_t lines = 0;
    cutter.cut(
        bytes,
        [&](std::string_view text) {
            ++lines;
            line(text);
        },
        too_long);
    gauge_.add(lines, bytes.size(), at);
    flooded_ = gauge_.flood() != nullptr;
}

const char* RunningWorker::flood() {
    return flooded_ && !std::exchange(flood_told_, true) ? gauge_.flood() : nullptr;
}

bool RunningWorker::climb(Time now) {
    bool quit = false;
    while (const std::optional<WorkerEnd> step = ladder_.next(now)) {
        switch (*step) {
            case WorkerEnd::quit:
                quit = input_.is_open() && say("QUIT");
                if (!input_.is_open()) {
                    ladder_.missed(now);
                }
                break;
            case WorkerEnd::input:
                input_.close();
                break;
            case WorkerEnd::sigterm:
                child_->signal(SIGTERM);
                break;
            case WorkerEnd::sigkill:
                child_->signal(SIGKILL);
                break;
            case WorkerEnd::gone:
                break;
        }
    }
    return quit;
}

}  // namespace host
