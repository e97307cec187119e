// How and when a child process ended. A thread of its own waits for it, so that the time is the
// real one and waiting can have a deadline.
#pragma once

#include <condition_variable>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>

#include "host/process/clock.h"
#include "host/process/mutex.h"

namespace host {

struct Exit {
    int status = 0;  // when no signal killed it
    int signal = 0;  // 0: it exited by itself
    // False: nobody knows how it ended, because this process ignores SIGCHLD or waits for all of
    // its children elsewhere.
    bool known = true;
    TimePoint at;

    bool clean() const {
        return known && signal == 0 && status == 0;
    }
};

// "status 1" or "signal 9".
std::string describe(const Exit& exit);

// Every operation may be called from any thread.
class ExitWatch {
  public:
    // Takes charge of the process, which is killed if it still runs when the watch is destroyed.
    explicit ExitWatch(pid_t process);
    ~ExitWatch();

    pid_t process() const {
        return process_;
    }

    // False when the process has ended already.
    bool signal(int number);

    // The same for all processes of the group that the process leads.
    bool signal_group(int number);

    // Nothing when it still runs at the deadline.
    std::optional<Exit> await(TimePoint deadline);

  private:
    void watch();

    const pid_t process_;
    Mutex mutex_;
    std::condition_variable ended_;
    std::optional<Exit> exit_ HOST_GUARDED_BY(mutex_);
    std::thread thread_;  // the constructor and the destructor only
};

}  // namespace host
