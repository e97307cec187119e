#pragma once

#include <atomic>
#include <forward_list>
#include <string>
#include <utility>

#include "threads/main_thread.h"

// A text that the main thread changes while other threads read it without a lock. Every text ever
// published is kept, so a reference stays good for as long as the object lives.
class PublishedString {
  public:
    // Any thread.
    const std::string& get() const {
        return *current_.load();
    }

    void publish(std::string text) REQUIRES(main_thread) {
        if (text == get()) {
            return;
        }
        texts_.push_front(std::move(text));
        current_.exchange(&texts_.front());
    }

  private:
    std::forward_list<std::string> texts_ = {std::string()};
    std::atomic<const std::string*> current_{&texts_.front()};
};
