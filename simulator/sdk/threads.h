#pragma once

// Starts the simulator's threads. They take no signal: those are the application's.

#include <signal.h>
#include <thread>

namespace camera_sim {

template <typename Body>
std::thread start_thread(Body body) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(body);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace camera_sim
