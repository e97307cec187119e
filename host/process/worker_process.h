// A camera worker as its host sees it: a child process that takes command lines and gives protocol
// lines. Every operation may be called from any thread.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "host/process/clock.h"
#include "host/process/exit_watch.h"
#include "host/process/line_stream.h"
#include "host/process/pipe.h"
#include "host/process/spawn.h"

namespace host {

// How long each step of the ladder is given. The worker bounds its own shutdown to 3 s, but only
// once it has taken the QUIT: one shot that is being fired goes first.
struct EndTimes {
    Duration after_quit = std::chrono::seconds(6);
    Duration after_closing_input = std::chrono::seconds(1);
    Duration after_sigterm = std::chrono::seconds(1);
};

enum class EndedBy { itself, quit, closed_input, sigterm, sigkill };

struct Ending {
    EndedBy by;
    Exit exit;
};

class WorkerProcess {
  public:
    // Nothing when the process could not be started; the reason is then in `error`.
    static std::unique_ptr<WorkerProcess> start(const SpawnRequest& request, std::string& error);

    // Ends the worker by the ladder if it still runs.
    ~WorkerProcess();

    // False when the worker no longer takes input, or took none for 5 s.
    bool send(std::string_view line);
    bool send_bytes(std::string_view bytes);

    // The next line of output; nothing at the deadline, or at once when the output has ended.
    std::optional<Line> next_line(TimePoint deadline);
    bool output_ended();

    void close_input();
    void close_output();

    bool signal(int number);
    std::optional<Exit> await_exit(TimePoint deadline);

    // QUIT, closing the input, SIGTERM, SIGKILL: each step only when the one before it did not do.
    Ending end(const EndTimes& times = {});

    pid_t process() const {
        return exit_watch_.process();
    }

  private:
    WorkerProcess(pid_t process, Descriptor input, Descriptor output, Pipe wake_up);

    std::mutex input_mutex_;
    Descriptor input_;
    LineStream output_;
    ExitWatch exit_watch_;
};

}  // namespace host
