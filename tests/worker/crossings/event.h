// Something that happens once, and threads that wait for it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Far beyond what any thread here needs; only a failing test waits for it.
constexpr std::chrono::seconds patience{20};

class Event {
  public:
    void happen() {
        {
            const std::lock_guard lock(mutex_);
            happened_ = true;
        }
        changed_.notify_all();
    }

    // False: it did not happen.
    bool await() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [this] { return happened_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool happened_ = false;
};
