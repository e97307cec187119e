#include "tether/live/signals.h"

#include <signal.h>
#include <thread>
#include <utility>

namespace tether {

std::vector<int> ending_signals() {
    struct sigaction hang_up {};
    if (sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler == SIG_IGN) {
        return {SIGINT, SIGTERM};
    }
    return {SIGINT, SIGTERM, SIGHUP};
}

void act_on_signals(const std::vector<int>& numbers, std::function<void(int)> act) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : numbers) {
        sigaddset(&signals, number);
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    for (const int number : numbers) {
        signal(number, SIG_DFL);  // some systems drop what is ignored, blocked or not
    }
    std::thread([signals, act = std::move(act)] {
        for (int number = 0; sigwait(&signals, &number) == 0;) {
            act(number);
        }
    }).detach();
}

}  // namespace tether
