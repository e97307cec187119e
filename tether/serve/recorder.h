// Writes the record from a thread of its own: who hears the lines must not wait for a disk.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "host/camera.h"
#include "host/process/mutex.h"
#include "tether/conversation/record.h"

namespace serve {

// Every operation may be called from any thread.
class Recorder {
  public:
    // Called once, with the reason, when the record ends before the rest does. On any thread: it
    // must not wait.
    using EndsEarly = std::function<void(const std::string& why)>;

    // The record is open, and stays the caller's. Moments are counted from now on, where a line
    // does not say its own.
    Recorder(tether::Record& record, EndsEarly ends_early);
    // Writes what waits, however long the disk takes.
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // Much that waits already ends the record: a hole in the middle would be worse.
    void add(const host::WireLine& line);

    // Who asks: the client's own words.
    void add_client(const std::string& name, const std::string& version);

    // False when not all was written by the deadline.
    bool flush(host::TimePoint deadline);

  private:
    // What stands in one line of the record.
    struct Entry {
        enum class Kind { line, client };
        Kind kind = Kind::line;
        host::WireLine line;  // of a client only the text and the time
    };

    void add(Entry entry);
    void work();
    std::optional<Entry> next();
    void write(const Entry& entry, host::TimePoint at);
    bool has_given_up();
    void say(const std::string& why);

    const host::TimePoint start_ = host::Clock::now();
    const EndsEarly ends_early_;
    std::atomic<bool> said_{false};
    tether::Record& record_;  // the thread only
    host::Mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable written_;
    std::deque<Entry> entries_ HOST_GUARDED_BY(mutex_);
    std::size_t bytes_ HOST_GUARDED_BY(mutex_) = 0;  // with those being written
    bool given_up_ HOST_GUARDED_BY(mutex_) = false;
    bool ending_ HOST_GUARDED_BY(mutex_) = false;
    std::thread thread_;  // the constructor and the destructor only
};

}  // namespace serve
