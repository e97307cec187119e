// Signals that interrupt whatever the other threads of this process wait in.
#pragma once

#include <atomic>
#include <signal.h>
#include <thread>
#include <unistd.h>

// Made before the thread that is to be interrupted, which must not block SIGUSR1.
class Interruptions {
  public:
    Interruptions() {
        struct sigaction count {};
        count.sa_handler = [](int) {
            ++seen;
        };
        sigaction(SIGUSR1, &count, &action_before_);
    }
    ~Interruptions() {
        sigaction(SIGUSR1, &action_before_, nullptr);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

    // So many, one after the other, that the thread has come to its waiting meanwhile.
    static void send() {
        sigset_t blocked;
        sigset_t mask_before;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &blocked, &mask_before);
        for (int number = 0; number < 500; ++number) {
            const int before = seen;
            kill(getpid(), SIGUSR1);
            while (seen == before) {
                std::this_thread::yield();
            }
        }
        pthread_sigmask(SIG_SETMASK, &mask_before, nullptr);
    }

  private:
    inline static std::atomic<int> seen{0};
    struct sigaction action_before_ {};
};
