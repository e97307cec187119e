// Pipes, whatever state the process is in that makes them.
#include "host/process/pipe.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

#include "host/process/spawn.h"
#include "tests/host/open_descriptors.h"

namespace host {
namespace {

// What this process prints would go into the pipe otherwise.
TEST(PipeTest, NoEndTakesThePlaceOfAStandardStream) {
    for (unsigned closed = 0; closed < 8; ++closed) {
        int ends[2];
        unsigned still_closed = 0;
        {
            const StandardStreamsClosed streams(closed);
            const auto pipe = make_pipe();
            ends[0] = pipe ? pipe->read_end.number() : -1;
            ends[1] = pipe ? pipe->write_end.number() : -1;
            for (int number = 0; number < 3; ++number) {
                still_closed |= fcntl(number, F_GETFD) == -1 ? 1u << number : 0;
            }
        }
        EXPECT_GT(ends[0], STDERR_FILENO) << closed;
        EXPECT_GT(ends[1], STDERR_FILENO) << closed;
        EXPECT_EQ(still_closed, closed);
    }
}

// An end that gets the number of a stream needs another one.
TEST(PipeTest, ThereIsNoneWithoutTwoDescriptorsAboveTheStreams) {
    for (unsigned closed = 0; closed < 8; ++closed) {
        for (const int left : {0, 1, 2}) {
            bool made = false;
            {
                const DescriptorsLeft few(left + 3);  // the streams are kept under three
                const StandardStreamsClosed streams(closed);
                made = make_pipe().has_value();
            }
            EXPECT_EQ(made, left == 2) << closed << ", " << left << " left";
        }
    }
}

TEST(PipeTest, ADescriptorIsHandedOn) {
    auto one = make_pipe();
    auto two = make_pipe();
    ASSERT_TRUE(one && two);
    const int number = two->write_end.number();
    one->write_end = std::move(two->write_end);
    EXPECT_EQ(one->write_end.number(), number);
    const Descriptor last(std::move(one->write_end));
    EXPECT_EQ(last.number(), number);
    EXPECT_EQ(one->write_end.number(), -1) << "as what it is handed to takes it";
    one->read_end.close();
    EXPECT_EQ(one->read_end.number(), -1);
    EXPECT_EQ(Descriptor().number(), -1);
    EXPECT_EQ(SpawnRequest{}.error_descriptor, -1);
    EXPECT_EQ(SpawnRequest{}.inherited_descriptor, -1);
}

TEST(PipeTest, AWriteWaitsForRoomUntilItsDeadline) {
    auto pipe = make_pipe();
    ASSERT_TRUE(pipe);
    make_non_blocking(pipe->write_end);
    const std::string more_than_it_holds(1 << 20, 'x');
    EXPECT_FALSE(write_all(pipe->write_end, more_than_it_holds, after(std::chrono::seconds(0))));
    std::size_t read = 0;
    std::thread reader([&] {
        std::array<char, 4096> bytes;
        ssize_t count = 0;
        while ((count = ::read(pipe->read_end.number(), bytes.data(), bytes.size())) > 0) {
            read += static_cast<std::size_t>(count);
        }
    });
    EXPECT_TRUE(write_all(pipe->write_end, more_than_it_holds, after(std::chrono::minutes(1))));
    pipe->write_end.close();
    reader.join();
    EXPECT_GT(read, more_than_it_holds.size()) << "what fitted in at first came too";
}

TEST(PipeTest, ATimeOutIsRoundedUpAndNeverNegative) {
    EXPECT_EQ(poll_timeout(TimePoint{}), 0);
    EXPECT_EQ(poll_timeout(TimePoint::max()), 1'000'000'000);
    const auto before = Clock::now();
    const int left = poll_timeout(before + std::chrono::minutes(1));
    const auto passed = Clock::now() - before;
    EXPECT_LE(left, 60'000);
    EXPECT_GE(std::chrono::milliseconds(left) + passed, std::chrono::minutes(1));
}

bool is_pending(int signal) {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

bool is_blocked(int signal) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

TEST(PipeTest, AWriteThatNobodyReadsLeavesTheSignalsAsTheyWere) {
    auto pipe = make_pipe();
    ASSERT_TRUE(pipe);
    pipe->read_end.close();
    EXPECT_FALSE(write_all(pipe->write_end, "x", after(std::chrono::seconds(1))));
    EXPECT_FALSE(is_blocked(SIGPIPE));

    sigset_t sigpipe;
    sigset_t before;
    sigemptyset(&sigpipe);
    sigaddset(&sigpipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &sigpipe, &before);
    EXPECT_FALSE(write_all(pipe->write_end, "x", after(std::chrono::seconds(1))));
    EXPECT_FALSE(is_pending(SIGPIPE)) << "the one that the write drew";
    EXPECT_TRUE(is_blocked(SIGPIPE));
    raise(SIGPIPE);
    EXPECT_FALSE(write_all(pipe->write_end, "x", after(std::chrono::seconds(1))));
    EXPECT_TRUE(is_pending(SIGPIPE)) << "the host's own";
    int taken = 0;
    while (is_pending(SIGPIPE)) {
        sigwait(&sigpipe, &taken);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

}  // namespace
}  // namespace host
