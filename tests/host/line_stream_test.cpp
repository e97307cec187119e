// Lines out of a pipe, without a worker.
#include "host/process/line_stream.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "tests/host/interruptions.h"

namespace host {
namespace {

constexpr std::chrono::minutes patience{1};  // only a failing test waits for it

class LineStreamTest : public testing::Test {
  protected:
    void read(const OutputLimits& limits = {}, std::function<void()> cut_off = {}) {
        auto pipe = make_pipe();
        auto wake_up = make_pipe();
        ASSERT_TRUE(pipe && wake_up);
        end_ = std::move(pipe->write_end);
        stream_.emplace(std::move(pipe->read_end), std::move(*wake_up), limits, std::move(cut_off));
    }
    bool write(std::string_view bytes) const {
        return write_all(end_, bytes, after(patience));
    }
    std::string next(TimePoint deadline = after(patience)) {
        const auto line = stream_->next(deadline);
        return !line ? "(nothing)" : line->whole ? line->text : line->text + " (unfinished)";
    }

    Descriptor end_;
    std::optional<LineStream> stream_;
};

TEST_F(LineStreamTest, ThePipeIsClosedBeforeItIsSaidThatALimitWasPassed) {
    std::promise<bool> taken;
    read({3, 1000}, [&] { taken.set_value(write("x")); });
    EXPECT_TRUE(write("1234"));
    EXPECT_FALSE(taken.get_future().get());
}

TEST_F(LineStreamTest, ThatItHasEndedIsSaidToNobody) {
    int calls = 0;
    read({}, [&] { ++calls; });
    EXPECT_TRUE(write("one\npart"));
    end_.close();
    EXPECT_EQ(next(), "one");
    EXPECT_EQ(next(), "part (unfinished)");
    EXPECT_EQ(next(), "(nothing)");
    EXPECT_TRUE(stream_->ended());
    EXPECT_EQ(stream_->trouble(), "");
    stream_.reset();
    EXPECT_EQ(calls, 0);
}

TEST_F(LineStreamTest, InterruptionsEndNothingAndHideNoEnd) {
    const Interruptions interruptions;
    read();
    for (const char* text : {"one", "two"}) {
        Interruptions::send();
        EXPECT_TRUE(write(std::string(text) + "\n"));
        EXPECT_EQ(next(), text);
    }
    Interruptions::send();
    end_.close();
    EXPECT_EQ(next(), "(nothing)");
    EXPECT_TRUE(stream_->ended());
}

TEST_F(LineStreamTest, CanBeClosedAfterAnInterruption) {
    const Interruptions interruptions;
    for (int round = 0; round < 8; ++round) {
        read();
        Interruptions::send();
        stream_->close();
        EXPECT_TRUE(stream_->ended());
    }
}

// Each byte wakes the one who waits.
TEST_F(LineStreamTest, ALineIsWaitedForWithoutEndToItsEnd) {
    read();
    std::thread writer([&] {
        for (int number = 0; number < 1000; ++number) {
            write("x");
            std::this_thread::yield();
        }
        write("\n");
    });
    EXPECT_EQ(next(TimePoint::max()), std::string(1000, 'x'));
    writer.join();
}

}  // namespace
}  // namespace host
