#include "host/process/exit_watch.h"

#include <cerrno>
#include <signal.h>
#include <sys/wait.h>

namespace host {

std::string describe(const Exit& exit) {
    if (!exit.known) {
        return "a status that this process did not get to see";
    }
    return exit.signal != 0 ? "signal " + std::to_string(exit.signal)
                            : "status " + std::to_string(exit.status);
}

ExitWatch::ExitWatch(pid_t process) : process_(process) {
    thread_ = std::thread([this] { watch(); });
}

ExitWatch::~ExitWatch() {
    signal(SIGKILL);
    thread_.join();
}

bool ExitWatch::signal(int number) {
    const MutexLock lock(mutex_);
    return !exit_ && kill(process_, number) == 0;
}

bool ExitWatch::signal_group(int number) {
    const MutexLock lock(mutex_);
    return !exit_ && kill(-process_, number) == 0;
}

std::optional<Exit> ExitWatch::await(TimePoint deadline) {
    const MutexLock lock(mutex_);
    while (!exit_ && mutex_.wait_until(ended_, deadline)) {}
    return exit_;
}

void ExitWatch::watch() {
    // The process is left unreaped until the lock is held: its number cannot become another
    // process's between the check and the kill in signal().
    siginfo_t information;
    while (waitid(P_PID, static_cast<id_t>(process_), &information, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {}
    Exit exit;
    exit.at = Clock::now();
    {
        const MutexLock lock(mutex_);
        int status = 0;
        pid_t reaped = 0;
        while ((reaped = waitpid(process_, &status, 0)) < 0 && errno == EINTR) {}
        exit.known = reaped == process_;
        if (WIFSIGNALED(status)) {
            exit.signal = WTERMSIG(status);
        } else {
            exit.status = WEXITSTATUS(status);
        }
        exit_ = exit;
    }
    ended_.notify_all();
}

}  // namespace host
