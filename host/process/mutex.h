// std::mutex with the annotations that the compiler checks locking by: no other mutex is used on
// the host's side.
#pragma once

#include <condition_variable>
#include <mutex>

#include "host/process/clock.h"
#include "host/process/thread_annotations.h"

namespace host {

class HOST_CAPABILITY("mutex") Mutex {
  public:
    void lock() HOST_ACQUIRE() {
        mutex_.lock();
    }
    void unlock() HOST_RELEASE() {
        mutex_.unlock();
    }

    // Lets go of the mutex while asleep and holds it again on return. Wakes spuriously: wait in a
    // loop.
    void wait(std::condition_variable& condition) HOST_REQUIRES(this) {
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        condition.wait(lock);
        lock.release();
    }

    // The same, but false once the deadline has passed.
    bool wait_until(std::condition_variable& condition, TimePoint deadline) HOST_REQUIRES(this) {
        // A clock's last moment overflows where the library counts from now.
        if (deadline == TimePoint::max()) {
            wait(condition);
            return true;
        }
        std::unique_lock<std::mutex> lock(mutex_, std::adopt_lock);
        const bool in_time = condition.wait_until(lock, deadline) == std::cv_status::no_timeout;
        lock.release();
        return in_time;
    }

  private:
    std::mutex mutex_;
};

class HOST_SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) HOST_ACQUIRE(mutex) : mutex_(mutex) {
        mutex_.lock();
    }
    ~MutexLock() HOST_RELEASE() {
        mutex_.unlock();
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace host
