// A program of the user's that is run for each picture, with the picture's path as its last
// argument: at most two at a time, never through a shell, killed when it takes too long.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/process/exit_watch.h"
#include "host/values/picture.h"

namespace tether {

// The path of a program: as it is when it has a slash, otherwise from PATH. Nothing, and why, when
// there is none that can be run.
std::optional<std::string> find_program(const std::string& name, std::string& why);

// The main thread only.
class Programs {
  public:
    // The program's path, then its fixed arguments; empty: none is run. One that takes longer is
    // killed, with all that it has started.
    explicit Programs(std::vector<std::string> command,
                      std::chrono::milliseconds time_to_run = std::chrono::seconds(60))
        : command_(std::move(command)), time_to_run_(time_to_run) {}

    bool any() const {
        return !command_.empty();
    }

    // Now or as soon as another one has ended. Each is followed by one ProgramEnded, unless
    // stop_starting() comes before its turn.
    void run(const host::Picture& picture);

    // Has been heard: the next one can be started.
    void ended(const std::string& picture);

    void stop_starting() {
        starting_ = false;
    }

    // How many pictures wait for their program.
    std::size_t left() const {
        return waiting_.size();
    }

    void kill_all();

    std::size_t running() const {
        return running_.size();
    }

  private:
    struct Turn {
        std::string picture;  // its id
        std::string path;
    };

    void start_next();
    void start(const Turn& turn);

    const std::vector<std::string> command_;
    const std::chrono::milliseconds time_to_run_;
    bool starting_ = true;
    std::deque<Turn> waiting_;
    std::map<std::string, std::shared_ptr<host::ExitWatch>> running_;  // by picture
};

}  // namespace tether
