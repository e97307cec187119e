#include "host/process/worker_process.h"

#include <cerrno>
#include <cstring>
#include <signal.h>
#include <utility>

#include "host/process/command.h"

namespace host {
namespace {

// The worker reads its input on a thread of its own, so a pipe without room for this long means
// that it is stopped.
constexpr std::chrono::seconds time_to_send{5};

// One that floods is broken: it gets no time for a shot that it may be firing.
constexpr EndTimes times_for_a_flood{std::chrono::seconds(1), std::chrono::seconds(1),
                                     std::chrono::seconds(1)};

}  // namespace

std::unique_ptr<WorkerProcess> WorkerProcess::start(const SpawnRequest& request, std::string& error,
                                                    const OutputLimits& limits) {
    std::optional<Pipe> input = make_pipe();
    std::optional<Pipe> output = make_pipe();
    std::optional<Pipe> wake_up = make_pipe();
    if (!input || !output || !wake_up) {
        error = std::string("cannot make a pipe: ") + std::strerror(errno);
        return nullptr;
    }
    const std::optional<pid_t> process = spawn(request, input->read_end, output->write_end, error);
    if (!process) {
        return nullptr;
    }
    make_non_blocking(input->write_end);
    return std::unique_ptr<WorkerProcess>(new WorkerProcess(*process, std::move(input->write_end),
                                                            std::move(output->read_end),
                                                            std::move(*wake_up), limits));
}

WorkerProcess::WorkerProcess(pid_t process, Descriptor input, Descriptor output, Pipe wake_up,
                             const OutputLimits& limits)
    : input_(std::move(input)),
      exit_watch_(process),
      output_(std::move(output), std::move(wake_up), limits, [this] { end(times_for_a_flood); }) {}

WorkerProcess::~WorkerProcess() {
    end();
}

bool WorkerProcess::send(std::string_view line, std::string& why) {
    why = why_not_one_command(line);
    if (!why.empty()) {
        return false;
    }
    if (!send_bytes(std::string(line) + "\n")) {
        why = "the worker did not take this line";
        return false;
    }
    return true;
}

bool WorkerProcess::send(std::string_view line) {
    std::string why;
    return send(line, why);
}

bool WorkerProcess::send_bytes(std::string_view bytes) {
    const MutexLock lock(input_mutex_);
    return !input_closing_.load() && write(bytes, after(time_to_send));
}

bool WorkerProcess::write(std::string_view bytes, TimePoint deadline) {
    return input_.is_open() && write_all(input_, bytes, deadline);
}

std::optional<Line> WorkerProcess::next_line(TimePoint deadline) {
    return output_.next(deadline);
}

bool WorkerProcess::output_ended() {
    return output_.ended();
}

std::string WorkerProcess::trouble() {
    return output_.trouble();
}

void WorkerProcess::close_input() {
    input_closing_.exchange(true);
    const MutexLock lock(input_mutex_);
    input_.close();
}

void WorkerProcess::close_output() {
    output_.close();
}

bool WorkerProcess::signal(int number) {
    return exit_watch_.signal(number);
}

std::optional<Exit> WorkerProcess::await_exit(TimePoint deadline) {
    return exit_watch_.await(deadline);
}

bool WorkerProcess::send_quit(TimePoint deadline) {
    input_closing_.exchange(true);
    const MutexLock lock(input_mutex_);
    return write("QUIT\n", deadline);
}

Ending WorkerProcess::end(const EndTimes& times) {
    if (const auto exit = await_exit(Clock::now())) {
        return {EndedBy::itself, *exit};
    }
    const TimePoint quit_deadline = after(times.after_quit);
    if (send_quit(quit_deadline)) {
        if (const auto exit = await_exit(quit_deadline)) {
            return {EndedBy::quit, *exit};
        }
    }
    close_input();
    if (const auto exit = await_exit(after(times.after_closing_input))) {
        return {EndedBy::closed_input, *exit};
    }
    signal(SIGTERM);
    if (const auto exit = await_exit(after(times.after_sigterm))) {
        return {EndedBy::sigterm, *exit};
    }
    signal(SIGKILL);
    return {EndedBy::sigkill, *await_exit(TimePoint::max())};
}

}  // namespace host
