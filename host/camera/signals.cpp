#include "host/camera/signals.h"

#include <initializer_list>
#include <signal.h>

namespace host {

void block_signals() {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&signals, fault);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace host
