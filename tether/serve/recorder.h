// Writes the record from a thread of its own: who hears the lines must not wait for a disk.
#pragma once

#include <condition_variable>
#include <deque>
#include <optional>
#include <thread>

#include "host/camera.h"
#include "host/process/mutex.h"
#include "tether/conversation/record.h"

namespace serve {

// Every operation may be called from any thread.
class Recorder {
  public:
    // The record is open, and stays the caller's.
    explicit Recorder(tether::Record& record);
    // Writes what waits, however long the disk takes.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Much that waits already ends the record: a hole in the middle would be worse.
    void add(const host::WireLine& line);

    // False when not all was written by the deadline.
    bool flush(host::TimePoint deadline);

  private:
    void work();
    std::optional<host::WireLine> next();
    bool has_given_up();

    tether::Record& record_;  // the thread only
    host::Mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable written_;
    std::deque<host::WireLine> lines_ HOST_GUARDED_BY(mutex_);
    std::size_t bytes_ HOST_GUARDED_BY(mutex_) = 0;  // with those being written
    bool given_up_ HOST_GUARDED_BY(mutex_) = false;
    bool ending_ HOST_GUARDED_BY(mutex_) = false;
    std::thread thread_;  // the constructor and the destructor only
};

}  // namespace serve
