#include "tether/rpc/writer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <thread>
#include <unistd.h>

#include "host/process/mutex.h"
#include "host/process/pipe.h"

namespace rpc {
namespace {

using host::MutexLock;
using std::chrono::seconds;

// A client at the other end of a pipe, and what the writer has said.
class WriterTest : public testing::Test {
  protected:
    WriterTest() : pipe_(*host::make_pipe()) {
        signal(SIGPIPE, SIG_IGN);
    }

    Writer::News news() {
        return {[this](const std::string& id) {
                    const MutexLock lock(mutex_);
                    written_.push_back(id);
                },
                [this] {
                    {
                        const MutexLock lock(mutex_);
                        ++changes_;
                    }
                    changed_.notify_all();
                }};
    }

    int output() const {
        return pipe_.write_end.number();
    }

    std::string read(std::size_t bytes) {
        std::string text(bytes, '\0');
        std::size_t got = 0;
        while (got < bytes) {
            const ssize_t count = ::read(pipe_.read_end.number(), text.data() + got, bytes - got);
            if (count <= 0) {
                break;
            }
            got += static_cast<std::size_t>(count);
        }
        text.resize(got);
        return text;
    }

    std::vector<std::string> written() {
        const MutexLock lock(mutex_);
        return written_;
    }

    void await_a_change() {
        const auto deadline = host::after(seconds(20));
        const MutexLock lock(mutex_);
        while (changes_ == 0) {
            ASSERT_TRUE(mutex_.wait_until(changed_, deadline)) << "nothing changed";
        }
        changes_ = 0;
    }

    host::Pipe pipe_;
    host::Mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> written_ HOST_GUARDED_BY(mutex_);
    int changes_ HOST_GUARDED_BY(mutex_) = 0;
};

TEST_F(WriterTest, WritesEachMessageAsALine) {
    Writer writer(output(), news());
    writer.state("state");
    writer.answer("answer");
    EXPECT_EQ(read(13), "state\nanswer\n");
}

TEST_F(WriterTest, SaysThatAPictureIsWrittenBeforeAllIs) {
    Writer writer(output(), news());
    EXPECT_TRUE(writer.picture("picture", "p1"));
    EXPECT_TRUE(writer.flush(seconds(20)));
    EXPECT_EQ(written(), std::vector<std::string>{"p1"});
}

TEST_F(WriterTest, AClientThatDoesNotReadHoldsNobodyUp) {
    Writer writer(output(), news());
    const std::string text(100000, 'a');
    std::size_t answers = 0;
    while (!writer.is_full()) {
        writer.answer(text);
        ++answers;
    }
    EXPECT_FALSE(writer.picture("picture", "p1"));
    EXPECT_FALSE(writer.flush(seconds(0)));
    // It reads again.
    EXPECT_EQ(read(answers * (text.size() + 1)).size(), answers * (text.size() + 1));
    await_a_change();
    EXPECT_FALSE(writer.is_full());
    EXPECT_TRUE(writer.picture("picture", "p1"));
    EXPECT_EQ(read(8), "picture\n");
    EXPECT_TRUE(writer.flush(seconds(20)));
    EXPECT_EQ(written(), std::vector<std::string>{"p1"});
}

TEST_F(WriterTest, AClientThatReadsSlowlyGetsEverything) {
    constexpr seconds patience{1};
    Writer writer(output(), news());
    while (!writer.is_full()) {
        writer.answer(std::string(100000, 'a'));
    }
    // It takes longer than the writer waits for a client that reads nothing.
    std::thread slow([&] {
        const auto until = host::after(2 * patience);
        while (host::Clock::now() < until) {
            std::this_thread::sleep_for(patience / 8);
            read(50000);
        }
        read(std::size_t{1} << 24);
    });
    EXPECT_TRUE(writer.flush(patience));
    pipe_.write_end.close();
    slow.join();
}

TEST_F(WriterTest, AClientThatIsGoneIsToldOnce) {
    Writer writer(output(), news());
    pipe_.read_end.close();
    EXPECT_FALSE(writer.client_is_gone());
    writer.picture("picture", "p1");
    await_a_change();
    EXPECT_TRUE(writer.client_is_gone());
    EXPECT_EQ(written(), std::vector<std::string>{});
    EXPECT_FALSE(writer.picture("picture", "p1"));
    writer.answer("answer");
    EXPECT_FALSE(writer.flush(seconds(20)));
}

TEST_F(WriterTest, WaitsForRoomWhereTheOutputDoesNotBlock) {
    fcntl(output(), F_SETFL, fcntl(output(), F_GETFL) | O_NONBLOCK);
    Writer writer(output(), news());
    const std::string text(3000000, 'a');
    writer.answer(text);
    EXPECT_EQ(read(text.size() + 1), text + "\n");
}

TEST_F(WriterTest, CanBeDestroyedWhileItsClientDoesNotRead) {
    {
        Writer writer(output(), news());
        writer.answer(std::string(1000000, 'a'));
    }
    EXPECT_EQ(read(1000001).size(), 1000001U);
}

}  // namespace
}  // namespace rpc
