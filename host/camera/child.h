// The worker's process. Started and waited for on a thread of its own: a program on a disk that
// does not answer starts late or never, and a process that is stuck in the system does not end.
#pragma once

#include <memory>
#include <string>
#include <sys/types.h>

#include "host/camera/inbox.h"
#include "host/process/mutex.h"
#include "host/process/pipe.h"
#include "host/process/spawn.h"

namespace host {

// The child's ends; closed here once it has them.
struct ChildEnds {
    Descriptor input;
    Descriptor output;
    Descriptor error;
    Descriptor lock;  // may be closed already
};

class Child {
  public:
    // Tells the inbox WorkerStarted and ChildEnded, or WorkerNotStarted.
    static std::shared_ptr<Child> start(std::string run, SpawnRequest request, ChildEnds ends,
                                        std::shared_ptr<Inbox> inbox);

    // At once, or as soon as it is started. Nothing when it has ended.
    void signal(int number) HOST_EXCLUDES(mutex_);

    // Nobody waits for it any more: it is killed now, or when it starts. Its thread goes on to reap
    // it.
    void give_up() HOST_EXCLUDES(mutex_);

  private:
    Child(std::string run, std::shared_ptr<Inbox> inbox);
    void run(SpawnRequest request, ChildEnds ends);
    int reap(pid_t process) HOST_EXCLUDES(mutex_);

    const std::string run_;
    const std::shared_ptr<Inbox> inbox_;
    Mutex mutex_;
    pid_t process_ HOST_GUARDED_BY(mutex_) = 0;        // 0: not started yet, or reaped
    int signal_at_start_ HOST_GUARDED_BY(mutex_) = 0;  // 0: none
};

}  // namespace host
