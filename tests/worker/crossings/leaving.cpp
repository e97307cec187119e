// Detached threads go on while the process leaves: they must find all that they use in place.

#include <atomic>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

#include "program/dispatch.h"
#include "program/exit.h"
#include "protocol/emit.h"
#include "tests/worker/crossings/event.h"
#include "threads/command_queue.h"

namespace {

constexpr int runs = 20;
constexpr int threads = 4;

void write_to_nowhere() {
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
}

// What the reader, the signal thread, the watchdog and the SDK's threads do, without end.
void fire(SonyWorker& worker, std::atomic<int>& firing) {
    char name[] = "a.JPG";
    unsigned int codes[] = {0x0708, 0x0106};
    for (bool first = true;; first = false) {
        post_command("PRIME");
        emit_log("a line");
        worker.OnPropertyChangedCodes(2, codes);
        worker.OnCompleteDownload(name, 0xFFFFFFFF);
        worker.OnWarning(1);
        if (first) {
            ++firing;
        }
    }
}

[[noreturn]] void leave_under_fire() {
    main_thread.assume();
    write_to_nowhere();
    std::atomic<int> firing{0};
    SonyWorker worker;
    worker.init();
    worker.connect();
    post_command("QUIT");
    for (int thread = 0; thread < threads; ++thread) {
        std::thread([&] { fire(worker, firing); }).detach();
    }
    while (firing < threads) {
        std::this_thread::yield();
    }
    run_main_loop(worker);
    shut_down(worker);
}

// Goes after every other object of the program, and uses the queue then as a detached thread would.
struct GoesLast {
    ~GoesLast();
    bool uses_the_queue = false;
};
__attribute__((init_priority(101))) GoesLast goes_last;

GoesLast::~GoesLast() {
    if (!uses_the_queue) {
        return;
    }
    main_thread.assume();
    // Lines of all lengths, so that memory which the queue had given back would be used again.
    constexpr std::size_t longest = 1000;
    for (std::size_t length = 1; length <= longest; ++length) {
        post_command(std::string(length, 'x'));
    }
    for (std::size_t length = 1; length <= longest; ++length) {
        if (next_command() != std::string(length, 'x')) {
            std::_Exit(2);
        }
    }
}

// As when the SDK cannot be started: the queue still takes what comes.
[[noreturn]] void leave_with_the_queue_open() {
    goes_last.uses_the_queue = true;
    leave(0);
}

TEST(Leaving, EndsInOrderWhileTheOtherThreadsGoOn) {
    for (int run = 0; run < runs; ++run) {
        ASSERT_EXIT(leave_under_fire(), testing::ExitedWithCode(0), "");
    }
}

TEST(Leaving, TheQueueOutlivesEveryOtherObject) {
    ASSERT_EXIT(leave_with_the_queue_open(), testing::ExitedWithCode(0), "");
}

}  // namespace
