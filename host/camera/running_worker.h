// A worker while it is at work: its pipes, what comes out of them, the way up the ladder. The
// camera's thread only; nothing here waits.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <poll.h>
#include <string>
#include <string_view>
#include <vector>

#include "host/brain/effects.h"
#include "host/camera.h"
#include "host/camera/child.h"
#include "host/camera/flood_gauge.h"
#include "host/camera/ladder.h"
#include "host/camera/line_cutter.h"
#include "host/process/pipe.h"

namespace host {

// What is made of the output of a worker.
struct Ear {
    std::function<void(std::string_view)> line;
    std::function<void()> too_long;
    std::function<void(std::string_view)> error;  // a line of standard error
};

class RunningWorker {
  public:
    // Nothing, and why, when the process has no descriptors left. The run's lock is held by the
    // child only, as far as this is concerned.
    static std::unique_ptr<RunningWorker> start(const CameraOptions& options,
                                                const brain::StartWorker& what,
                                                const std::shared_ptr<Inbox>& inbox,
                                                std::string& why);

    // One that still runs is killed.
    ~RunningWorker();
    RunningWorker(const RunningWorker&) = delete;
    RunningWorker& operator=(const RunningWorker&) = delete;

    const std::string& run() const {
        return run_;
    }

    // Its lines are read from now on: the brain knows that it runs.
    void started() {
        started_ = true;
    }

    // False when it has read nothing for so long that there is no room.
    bool say(std::string_view line);

    // What to wait for, and what has come of it.
    void add_to(std::vector<pollfd>& sources) const;
    void write_on();

    // Reads once what has come out of it, and says whether there was anything. No lines come any
    // more once there was a flood.
    bool read(Time at, const Ear& ear);

    // What it has flooded with; nullptr when it has not. Asked for once.
    const char* flood();

    // Up the ladder, so long on each step.
    void end(Time rung, Time now) {
        ladder_.begin(rung, now);
    }

    // Takes the step that is due. True when that was QUIT.
    bool climb(Time now);

    Time wake_at() const {
        return ladder_.wake_at();
    }
    WorkerEnd ended_by() const {
        return ladder_.step();
    }

  private:
    RunningWorker(std::string run, Pipe input, Pipe output, Pipe error);
    // As much as a pipe holds: one reading leaves nothing that was written before it.
    using Buffer = std::array<char, std::size_t{64} * 1024>;

    static std::string_view read(Descriptor& pipe, Buffer& buffer);
    template <typename OnLine, typename OnTooLong>
    void hear(std::string_view bytes, LineCutter& cutter, Time at, const OnLine& line,
              const OnTooLong& too_long);

    const std::string run_;
    Descriptor input_;
    Descriptor output_;
    Descriptor error_;
    std::shared_ptr<Child> child_;
    bool started_ = false;
    std::string unsent_;
    LineCutter lines_;
    LineCutter error_lines_;
    FloodGauge gauge_;
    bool flooded_ = false;
    bool flood_told_ = false;
    Ladder ladder_;
    Buffer buffer_;
    Buffer error_buffer_;
};

}  // namespace host
