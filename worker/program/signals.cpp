#include "program/signals.h"

#include <string>

#include "protocol/emit.h"
#include "threads/command_queue.h"

sigset_t block_termination_signals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGHUP);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);

    // A host may start its children with these ignored, and an ignored signal never reaches
    // sigwait.
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    // A host that has gone away shows as the end of input; a write to it must not kill the worker
    // first.
    std::signal(SIGPIPE, SIG_IGN);
    return signals;
}

void signal_thread(sigset_t signals) {
    bool handled = false;
    for (;;) {
        int number = 0;
        if (sigwait(&signals, &number) != 0 || handled) {
            continue;
        }
        emit_log("signal " + std::to_string(number) + " — closing the camera session before exit");
        post_command("QUIT");
        handled = true;
    }
}
