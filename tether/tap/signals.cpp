#include "tether/tap/signals.h"

#include <cerrno>
#include <cstdlib>
#include <initializer_list>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tap {
namespace {

volatile sig_atomic_t write_end = -1;

void post(int number) {
    const int kept = errno;
    const char byte = static_cast<char>(number);
    // A pipe full of signals has that one in it already.
    [[maybe_unused]] const ssize_t ignored = ::write(write_end, &byte, 1);
    errno = kept;
}

}  // namespace

Signals::Signals() {
    if (auto made = host::make_pipe()) {
        pipe_ = std::move(*made);
        host::make_non_blocking(pipe_.read_end);
        host::make_non_blocking(pipe_.write_end);
        write_end = pipe_.write_end.number();
    }
    struct sigaction action {};
    action.sa_handler = post;
    action.sa_flags = SA_RESTART;
    sigset_t caught;
    sigemptyset(&caught);
    for (const int number :
         {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGALRM, SIGCHLD}) {
        sigaction(number, &action, nullptr);
        sigaddset(&caught, number);
    }
    pthread_sigmask(SIG_UNBLOCK, &caught, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

int Signals::take() const {
    char byte = 0;
    return ::read(pipe_.read_end.number(), &byte, 1) == 1 ? byte : 0;
}

void end_like(int wait_status) {
    if (WIFSIGNALED(wait_status)) {
        // The worker has left a core where cores are left; this one would take its place.
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        const int number = WTERMSIG(wait_status);
        signal(number, SIG_DFL);
        sigset_t it;
        sigemptyset(&it);
        sigaddset(&it, number);
        pthread_sigmask(SIG_UNBLOCK, &it, nullptr);
        raise(number);
        std::_Exit(128 + number);
    }
    std::_Exit(WEXITSTATUS(wait_status));
}

}  // namespace tap
