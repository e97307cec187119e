// A camera worker as its host sees it: a child process that takes command lines and gives protocol
// lines. Every operation may be called from any thread, and several at once; only the destructor
// comes after all of them.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/process/clock.h"
#include "host/process/exit_watch.h"
#include "host/process/line_stream.h"
#include "host/process/mutex.h"
#include "host/process/pipe.h"
#include "host/process/spawn.h"

namespace host {

// How long each step of the ladder is given; a host gives 5 s (host/brain/times.h). The worker ends
// 3 s after it has taken the QUIT, but before that a shot that is being fired goes first.
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
    // Nothing when the process could not be started; the reason is then in `error`. A worker whose
    // output passes the limits is ended by the ladder, at most 1 s a step and without anybody
    // asking for it; trouble() then says why.
    static std::unique_ptr<WorkerProcess> start(const SpawnRequest& request, std::string& error,
                                                const OutputLimits& limits = {});

    // Ends the worker by the ladder if it still runs.
    ~WorkerProcess();

    // One command, without its line feed. False, and a sentence in `why`, when the worker would not
    // read it as one (nothing is sent then), no longer takes input, or took none for 5 s.
    bool send(std::string_view line, std::string& why);
    bool send(std::string_view line);

    // Raw bytes, unchecked, for callers that build lines themselves.
    bool send_bytes(std::string_view bytes);

    // The next line of output; nothing at the deadline, or at once when the output has ended.
    std::optional<Line> next_line(TimePoint deadline);
    bool output_ended();

    // Why the output was cut off and the worker ended: a sentence to show; empty when it was not.
    // The lines before that can still be taken.
    std::string trouble();

    // Nothing is sent from now on; waits at most 5 s for a line that the worker is slow to take.
    void close_input();

    // Lines already read can still be taken.
    void close_output();

    bool signal(int number);
    std::optional<Exit> await_exit(TimePoint deadline);

    // QUIT, closing the input, SIGTERM, SIGKILL: each step only when the one before it did not do.
    // Nothing else is sent from now on. Two that end it at once each climb with their own times.
    Ending end(const EndTimes& times = {});

    pid_t process() const {
        return exit_watch_.process();
    }

  private:
    WorkerProcess(pid_t process, Descriptor input, Descriptor output, Pipe wake_up,
                  const OutputLimits& limits);
    bool write(std::string_view bytes, TimePoint deadline) HOST_REQUIRES(input_mutex_);
    bool send_quit(TimePoint deadline);

    // Held while a line is written, so that lines do not mix. Whoever waited for it looks at
    // input_closing_: otherwise a closing would wait for all who wait to send, 5 s each.
    Mutex input_mutex_;
    Descriptor input_ HOST_GUARDED_BY(input_mutex_);
    std::atomic<bool> input_closing_{false};
    ExitWatch exit_watch_;
    LineStream output_;  // last: its thread ends a worker that floods
};

}  // namespace host
