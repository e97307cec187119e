#include "host/process/worker_process.h"

#include <cerrno>
#include <cstring>
#include <signal.h>
#include <utility>

namespace host {
namespace {

// The worker reads its input on a thread of its own, so a pipe without room for this long means
// that it is stopped.
constexpr std::chrono::seconds time_to_send{5};

}  // namespace

std::unique_ptr<WorkerProcess> WorkerProcess::start(const SpawnRequest& request,
                                                    std::string& error) {
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
    return std::unique_ptr<WorkerProcess>(new WorkerProcess(
        *process, std::move(input->write_end), std::move(output->read_end), std::move(*wake_up)));
}

WorkerProcess::WorkerProcess(pid_t process, Descriptor input, Descriptor output, Pipe wake_up)
    : input_(std::move(input)),
      output_(std::move(output), std::move(wake_up)),
      exit_watch_(process) {}

WorkerProcess::~WorkerProcess() {
    end();
}

bool WorkerProcess::send(std::string_view line) {
    return send_bytes(std::string(line) + "\n");
}

bool WorkerProcess::send_bytes(std::string_view bytes) {
    const std::lock_guard lock(input_mutex_);
    return input_.is_open() && write_all(input_, bytes, after(time_to_send));
}

std::optional<Line> WorkerProcess::next_line(TimePoint deadline) {
    return output_.next(deadline);
}

bool WorkerProcess::output_ended() {
    return output_.ended();
}

void WorkerProcess::close_input() {
    const std::lock_guard lock(input_mutex_);
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

Ending WorkerProcess::end(const EndTimes& times) {
    if (const auto exit = await_exit(Clock::now())) {
        return {EndedBy::itself, *exit};
    }
    if (send("QUIT")) {
        if (const auto exit = await_exit(after(times.after_quit))) {
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
