#include "tether/live/signals.h"

#include <signal.h>
#include <thread>
#include <utility>

namespace tether {

void act_on_signals(std::initializer_list<int> numbers, std::function<void(int)> act) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : numbers) {
        struct sigaction found {};
        if (sigaction(number, nullptr, &found) != 0 || found.sa_handler != SIG_IGN) {
            sigaddset(&signals, number);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals, act = std::move(act)] {
        for (int number = 0; sigwait(&signals, &number) == 0;) {
            act(number);
        }
    }).detach();
}

}  // namespace tether
