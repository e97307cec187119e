// A text that one thread sets and any may read.
#pragma once

#include <string>

#include "host/process/mutex.h"

namespace host {

class SharedText {
  public:
    void set(const std::string& text) HOST_EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        text_ = text;
    }
    std::string get() const HOST_EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        return text_;
    }

  private:
    mutable Mutex mutex_;
    std::string text_ HOST_GUARDED_BY(mutex_);
};

}  // namespace host
