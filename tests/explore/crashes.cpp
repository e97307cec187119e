#include "tests/explore/crashes.h"

#include <csignal>

#include "tests/explore/scheduler.h"

namespace explore {

namespace {

constexpr int crashes[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

// On a stack of its own, which is left for the driver's and never returned to.
void end_run_after_crash(int number, siginfo_t* crash, void*) {
    if (run.self == nullptr) {
        std::signal(number, SIG_DFL);
        return;
    }
    complain("%s crashes with signal %d at address %p", run.self->name, number, crash->si_addr);
}

}  // namespace

void catch_crashes() {
    static char memory[65536];
    stack_t stack{};
    stack.ss_sp = memory;
    stack.ss_size = sizeof memory;
    sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_sigaction = end_run_after_crash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    for (const int number : crashes) {
        sigaction(number, &action, nullptr);
    }
}

}  // namespace explore
