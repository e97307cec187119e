// Everything that tether waits for, in one queue: the worker's lines, what is typed, and the wish
// to stop.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include "host/process/clock.h"
#include "host/process/worker_process.h"

namespace tether {

struct Event {
    enum class Kind { worker_line, worker_ended, typed, typing_ended, interrupted };
    Kind kind;
    std::string text;
    host::TimePoint at;
};

class Events {
  public:
    void post(Event event);

    // Nothing when nothing happened until the deadline.
    std::optional<Event> next(host::TimePoint deadline);

  private:
    std::mutex mutex_;
    std::condition_variable posted_;
    std::deque<Event> waiting_;
};

// The one queue of the process. Never destroyed: threads still post while the process ends.
Events& events();

// Each starts a thread that posts until the process ends. Signals are blocked in the calling
// thread, and so in all that it starts later: call this first.
void post_interrupts();
void post_typed_lines();
void post_worker_lines(host::WorkerProcess& worker);

}  // namespace tether
