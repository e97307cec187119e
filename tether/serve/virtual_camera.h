// The socket at which the virtual camera is told what happens to it. A thread of its own asks, so
// that a camera that hangs holds up nothing else.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "host/process/clock.h"
#include "host/process/mutex.h"

namespace serve {

// Every operation may be called from any thread.
class VirtualCamera {
  public:
    // The lines of the answer, the last of which is "ok" or begins with "error: "; nothing when the
    // camera did not answer in time.
    using Answered = std::function<void(std::optional<std::vector<std::string>>)>;

    explicit VirtualCamera(std::string socket);
    // Waits for the answer that is being waited for; questions behind it are dropped.
    ~VirtualCamera();
    VirtualCamera(const VirtualCamera&) = delete;
    VirtualCamera& operator=(const VirtualCamera&) = delete;

    // False when too many lines wait. `answered` is called once, on the thread of this object.
    bool tell(std::string line, host::TimePoint deadline, Answered answered);

  private:
    struct Question {
        std::string line;
        host::TimePoint deadline;
        Answered answered;
    };

    void work();

    const std::string socket_;
    host::Mutex mutex_;
    std::condition_variable changed_;
    std::deque<Question> questions_ HOST_GUARDED_BY(mutex_);
    bool ending_ HOST_GUARDED_BY(mutex_) = false;
    std::thread thread_;  // the constructor and the destructor only
};

}  // namespace serve
