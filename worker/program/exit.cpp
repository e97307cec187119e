#include "program/exit.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <unistd.h>

#include "protocol/emit.h"
#include "session/sdk.h"

namespace {

constexpr std::chrono::seconds exit_deadline{3};

// An SDK call can hang on an unplugged camera, a line on a host that does not read. Every line was
// flushed when it was written, so nothing is lost.
void exit_deadline_thread(int status) {
    std::this_thread::sleep_for(exit_deadline);
    _exit(status);
}

}  // namespace

void shut_down(SonyWorker& worker) {
    std::thread(exit_deadline_thread, 0).detach();
    worker.disconnect(true);
    sdk::release();
    leave(0);
}

void leave(int status) {
    close_output();
    std::exit(status);
}

void give_up() {
    std::thread(exit_deadline_thread, 1).detach();
    leave(1);
}
