// Everything that tether waits for, in one queue: the worker's lines, what is typed, and the wish
// to stop.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>

#include "host/process/clock.h"
#include "host/process/mutex.h"
#include "host/process/worker_process.h"

namespace tether {

struct Event {
    enum class Kind { worker_line, worker_ended, typed, typing_ended, interrupted };
    Kind kind;
    std::string text;
    host::TimePoint at;
};

// Every operation may be called from any thread.
class Events {
  public:
    // At once: what is rare and must not be held up.
    void post(Event event);

    // Waits while much waits already: for lines, of which a worker or a file can have any number.
    void post_line(Event event);

    // Nothing when nothing happened until the deadline.
    std::optional<Event> next(host::TimePoint deadline);

  private:
    host::Mutex mutex_;
    std::condition_variable posted_;
    std::condition_variable taken_;
    std::deque<Event> waiting_ HOST_GUARDED_BY(mutex_);
    std::size_t waiting_bytes_ HOST_GUARDED_BY(mutex_) = 0;
};

// The one queue of the process. Never destroyed: threads still post while the process ends.
Events& events();

// Each starts a thread that posts until the process ends. Signals are blocked in the calling
// thread, and so in all that it starts later: call this first.
void post_interrupts();
void post_typed_lines();
void post_worker_lines(host::WorkerProcess& worker);

}  // namespace tether
