#pragma once

#include <condition_variable>
#include <mutex>

#include "threads/thread_annotations.h"

// std::mutex with the annotations that the compiler checks locking by.
class CAPABILITY("mutex") Mutex {
  public:
    void lock() ACQUIRE() {
        mutex_.lock();
    }
    void unlock() RELEASE() {
        mutex_.unlock();
    }

    // Lets go of the mutex while asleep and holds it again on return. Wakes spuriously: wait in a
    // loop.
    void wait(std::condition_variable& condition) REQUIRES(this) {
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        condition.wait(lock);
        lock.release();
    }

  private:
    std::mutex mutex_;
};

class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) {
        mutex_.lock();
    }
    ~MutexLock() RELEASE() {
        mutex_.unlock();
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};
