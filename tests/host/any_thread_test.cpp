// Every operation of a worker's process from several threads at once.
#include <atomic>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <thread>
#include <vector>

#include "tests/host/child.h"

namespace {

using host::after;
using host::Clock;
using host::WorkerProcess;
using std::chrono::milliseconds;

// Starts all of them at one moment and waits for their end.
template <typename Operation>
void at_once(int threads, const Operation& operation) {
    std::atomic<bool> go{false};
    std::vector<std::thread> running;
    running.reserve(static_cast<std::size_t>(threads));
    for (int number = 0; number < threads; ++number) {
        running.emplace_back([&operation, &go, number] {
            while (!go.load()) {
                std::this_thread::yield();
            }
            operation(number);
        });
    }
    go.store(true);
    for (std::thread& thread : running) {
        thread.join();
    }
}

TEST(AnyThread, TheOutputIsClosedByAllAtOnce) {
    for (int round = 0; round < 50; ++round) {
        const auto child = start_script("exec cat");
        at_once(6, [&](int) {
            child->close_output();
            EXPECT_TRUE(child->output_ended());
        });
    }
}

TEST(AnyThread, TheWorkerIsEndedByAllAtOnce) {
    for (int round = 0; round < 50; ++round) {
        const auto child = start_script("while read line; do [ $line = QUIT ] && exit 0; done");
        at_once(6, [&](int) {
            const host::Ending ending = child->end({patience, patience, patience});
            EXPECT_TRUE(ending.exit.clean());
            EXPECT_FALSE(child->signal(SIGTERM));
        });
    }
}

TEST(AnyThread, LinesOfManySendersAreNotMixed) {
    constexpr int senders = 6;
    constexpr int lines = 200;
    const auto child = start_script("exec cat");
    const std::string text(3000, 'x');
    std::atomic<int> good{0};
    at_once(senders + 2, [&](int number) {
        if (number < senders) {
            for (int line = 0; line < lines; ++line) {
                EXPECT_TRUE(child->send(text + std::to_string(number)));
            }
            return;
        }
        while (good.load() < senders * lines) {
            const auto line = child->next_line(after(milliseconds(20)));
            if (line && line->whole && line->text.size() == text.size() + 1) {
                ++good;
            } else if (line) {
                ADD_FAILURE() << line->text;
                return;
            }
        }
    });
    EXPECT_EQ(good, senders * lines);
}

void do_one_of_all(WorkerProcess& child, int number) {
    switch (number % 11) {
        case 0:
            child.close_output();
            break;
        case 1:
            child.end({patience, patience, patience});
            break;
        case 2:
            child.close_input();
            break;
        case 3:
            child.next_line(after(patience));
            break;
        case 4:
            child.send("PRIME");
            break;
        case 5:
            child.send_bytes("PRIME\n");
            break;
        case 6:
            child.signal(SIGTERM);
            break;
        case 7:
            child.await_exit(after(patience));
            break;
        case 8:
            child.output_ended();
            break;
        case 9:
            EXPECT_EQ(child.trouble(), "");
            break;
        default:
            EXPECT_GT(child.process(), 0);
            break;
    }
}

TEST(AnyThread, EveryOperationMeetsEveryOther) {
    for (int round = 0; round < 60; ++round) {
        const auto child = start_script("echo ready; exec cat");
        at_once(11, [&](int number) { do_one_of_all(*child, number + round); });
        EXPECT_TRUE(child->await_exit(after(patience)));
    }
}

TEST(AnyThread, EveryOperationMeetsAFlood) {
    for (int round = 0; round < 20; ++round) {
        const auto child = start({"/usr/bin/yes", {}, {}, {}});
        at_once(8, [&](int number) {
            if (number % 4 == 0) {
                child->close_output();
            } else if (number % 4 == 1) {
                child->end({milliseconds(10), milliseconds(10), milliseconds(10)});
            } else if (number % 4 == 2) {
                child->next_line(after(patience));
            } else {
                child->trouble();
                child->send("PRIME");
            }
        });
        EXPECT_TRUE(child->await_exit(after(patience)));
    }
}

// A stopped worker takes nothing. Each sender would wait its 5 s one after the other, and the end
// behind all of them.
TEST(AnyThread, SendersInLineDoNotHoldUpTheEnd) {
    const auto child = start_script("exec cat");
    child->signal(SIGSTOP);
    const std::string more_than_a_pipe_holds(1 << 20, 'x');
    const auto start = Clock::now();
    at_once(7, [&](int number) {
        if (number > 0) {
            EXPECT_FALSE(child->send_bytes(more_than_a_pipe_holds));
            return;
        }
        child->end({milliseconds(10), milliseconds(10), milliseconds(10)});
    });
    // The 5 s of the one that writes already.
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
