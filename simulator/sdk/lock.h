#pragma once

// The one lock of the simulated SDK and its annotations, checked by Clang. It is taken at the top
// of every SDK call, control line and step of a thread of ours, given up while one of them waits,
// and never held while the application's callback runs. Journal lines are written under it, so that
// the journal's order is the order in which things happened.

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define SIM_ANNOTATION(x) __attribute__((x))
#else
#define SIM_ANNOTATION(x)
#endif
#define SIM_REQUIRES(lock) SIM_ANNOTATION(requires_capability(lock))

namespace camera_sim {

using Clock = std::chrono::steady_clock;
using Duration = std::chrono::nanoseconds;

class SIM_ANNOTATION(capability("mutex")) Lock {
  public:
    std::mutex mutex;
};

extern Lock& g_lock;  // never destroyed: threads of ours may outlive main

class SIM_ANNOTATION(scoped_lockable) Hold {
  public:
    Hold() SIM_ANNOTATION(acquire_capability(g_lock)) : lock_(g_lock.mutex) {}
    ~Hold() SIM_ANNOTATION(release_capability()) {}
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

    // Gives the lock up until `changed` is notified (possibly for nothing) or the time has come.
    void wait(std::condition_variable& changed) {
        changed.wait(lock_);
    }
    void wait_until(std::condition_variable& changed, Clock::time_point due) {
        changed.wait_until(lock_, due);
    }

    // Gives the lock up while `action` runs, or for that long.
    template <typename Action>
    void without(Action action) {
        lock_.unlock();
        action();
        lock_.lock();
    }
    void sleep(Duration duration);

  private:
    std::unique_lock<std::mutex> lock_;
};

}  // namespace camera_sim
