// Which signals reach the threads of a camera.
#include "host/camera/signals.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <thread>

namespace host {
namespace {

TEST(SignalsTest, OnlyThoseOfAFaultReachTheThread) {
    sigset_t mask;
    std::thread([&] {
        block_signals();
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    }).join();
    for (const int blocked : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGUSR1, SIGALRM}) {
        EXPECT_EQ(sigismember(&mask, blocked), 1) << blocked;
    }
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        EXPECT_EQ(sigismember(&mask, fault), 0) << fault;
    }
}

}  // namespace
}  // namespace host
