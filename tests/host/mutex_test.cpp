// A mutex is held by one thread at a time, also after a wait.
#include "host/process/mutex.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace host {
namespace {

TEST(MutexTest, IsHeldByOneThreadAtATime) {
    constexpr int rounds = 200'000;
    Mutex mutex;
    int count = 0;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const MutexLock lock(mutex);
                ++count;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 4 * rounds);
}

TEST(MutexTest, IsHeldAgainAfterAWaitThatWasInVain) {
    Mutex mutex;
    std::condition_variable never;
    std::atomic<bool> taken{false};
    std::thread other;
    {
        const MutexLock lock(mutex);
        EXPECT_FALSE(mutex.wait_until(never, Clock::now()));
        other = std::thread([&] {
            const MutexLock own(mutex);
            taken = true;
        });
        for (int look = 0; look < 10'000; ++look) {
            EXPECT_FALSE(taken.load());
            std::this_thread::yield();
        }
    }
    other.join();
    EXPECT_TRUE(taken);
}

}  // namespace
}  // namespace host
