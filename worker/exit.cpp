#include "worker/exit.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <unistd.h>

#include "protocol/emit.h"
#include "session/sdk.h"

namespace {

constexpr std::chrono::seconds exit_deadline{3};

// An SDK call can hang on an unplugged camera. Every line was flushed when it was written, so
// nothing is lost.
void exit_deadline_thread() {
    std::this_thread::sleep_for(exit_deadline);
    _exit(0);
}

}  // namespace

void shut_down(SonyWorker& worker) {
    std::thread(exit_deadline_thread).detach();
    worker.disconnect(true);
    sdk::release();
    leave(0);
}

void leave(int status) {
    close_output();
    std::exit(status);
}
