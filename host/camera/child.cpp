#include "host/camera/child.h"

#include <cerrno>
#include <signal.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <utility>

namespace host {

std::shared_ptr<Child> Child::start(std::string run, SpawnRequest request, ChildEnds ends,
                                    std::shared_ptr<Inbox> inbox) {
    std::shared_ptr<Child> child(new Child(std::move(run), std::move(inbox)));
    try {
        // Not joined: it may wait for as long as a disk or the system likes. It holds what it uses.
        std::thread([child, request = std::move(request), ends = std::move(ends)]() mutable {
            child->run(std::move(request), std::move(ends));
        }).detach();
    } catch (const std::system_error& error) {
        child->inbox_->post(brain::WorkerNotStarted{child->run_, std::string(error.what()) + "."});
    }
    return child;
}

Child::Child(std::string run, std::shared_ptr<Inbox> inbox)
    : run_(std::move(run)), inbox_(std::move(inbox)) {}

void Child::signal(int number) {
    const MutexLock lock(mutex_);
    if (process_ != 0) {
        kill(process_, number);
    } else {
        signal_at_start_ = number;
    }
}

void Child::give_up() {
    signal(SIGKILL);
}

void Child::run(SpawnRequest request, ChildEnds ends) {
    request.error_descriptor = ends.error.number();
    request.inherited_descriptor = ends.lock.number();
    std::string why;
    const std::optional<pid_t> process = spawn(request, ends.input, ends.output, why);
    ends = {};
    if (!process) {
        inbox_->post(brain::WorkerNotStarted{run_, why + "."});
        return;
    }
    {
        const MutexLock lock(mutex_);
        process_ = *process;
        kill(process_, signal_at_start_);
    }
    inbox_->post(brain::WorkerStarted{run_, *process});
    inbox_->post(ChildEnded{run_, reap(*process)});
}

// The process is left unreaped until the lock is held: its number cannot become another process's
// between the look and the kill in signal().
int Child::reap(pid_t process) {
    siginfo_t information;
    while (waitid(P_PID, static_cast<id_t>(process), &information, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {}
    const MutexLock lock(mutex_);
    int status = 0;
    const pid_t reaped = waitpid(process, &status, 0);
    process_ = 0;
    if (reaped != process) {
        return -1;  // a host that ignores SIGCHLD, or waits for all its children, has taken it
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace host
