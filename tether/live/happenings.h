// Everything that a command on a camera waits for, in one queue: what the camera tells, the answers
// to what it was asked, the wish to stop, keys, the ends of programs.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <variant>

#include "host/camera.h"
#include "host/process/clock.h"
#include "host/process/mutex.h"

namespace tether {

struct Answered {
    host::Answer answer;
};

// Ctrl-C, or a signal that means the same.
struct Interrupted {};

// So many lines were not taken in time and are not told.
struct LeftOut {
    std::uint64_t count = 0;
};

// Space or enter.
struct ShutterKey {};

// A program that was run for a picture.
struct ProgramEnded {
    std::string picture;  // its id
    std::string trouble;  // a sentence; empty: it went well
    // Somebody killed it while it still had time.
    bool cut_short = false;
};

using Happening =
    std::variant<host::WireLine, host::SessionState, host::Picture, host::Shot, host::Problem,
                 LeftOut, Answered, Interrupted, ShutterKey, ProgramEnded>;

// Every operation may be called from any thread. Posting never waits: who reads may be held up by a
// terminal, and the camera must not be. What can be any number is bounded: of states the latest
// waits, lines are left out and counted, thousands of problems are enough.
class Happenings {
  public:
    void post(Happening happening) HOST_EXCLUDES(mutex_);
    void post(host::SessionState state) HOST_EXCLUDES(mutex_);
    void post(host::WireLine line) HOST_EXCLUDES(mutex_);
    void post(host::Problem problem) HOST_EXCLUDES(mutex_);

    // Nothing when nothing happened until the deadline.
    std::optional<Happening> next(host::TimePoint deadline) HOST_EXCLUDES(mutex_);

  private:
    host::Mutex mutex_;
    std::condition_variable posted_;
    std::deque<Happening> waiting_ HOST_GUARDED_BY(mutex_);
    std::size_t line_bytes_ HOST_GUARDED_BY(mutex_) = 0;     // in waiting_
    std::size_t problem_bytes_ HOST_GUARDED_BY(mutex_) = 0;  // in waiting_
    std::uint64_t left_out_ HOST_GUARDED_BY(mutex_) = 0;
};

// The one queue of the process. Never destroyed: threads still post while the process ends.
Happenings& happenings();

// Posts all that a camera tells. `told`: what the camera is to know of each picture.
host::Listener listener(bool told);

// For Camera::ask.
void post_answer(const host::Answer& answer);

}  // namespace tether
