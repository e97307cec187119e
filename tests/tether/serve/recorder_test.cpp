#include "tether/serve/recorder.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/process/pipe.h"
#include "tests/temporary_folder.h"

namespace serve {
namespace {

namespace fs = std::filesystem;
using Direction = host::WireLine::Direction;
using std::chrono::milliseconds;
using std::chrono::seconds;

class RecorderTest : public testing::Test {
  protected:
    // Why the record ended early, as often as that was said.
    Recorder::EndsEarly noted() {
        return [this](const std::string& why) {
            const host::MutexLock lock(mutex_);
            ended_early_.push_back(why);
        };
    }
    std::vector<std::string> ended_early() {
        const host::MutexLock lock(mutex_);
        return ended_early_;
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();

  private:
    host::Mutex mutex_;
    std::vector<std::string> ended_early_ HOST_GUARDED_BY(mutex_);
};

// The lines of a record, without the first, which is the date.
std::vector<std::string> lines_of(const fs::path& file) {
    std::ifstream stream(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    lines.erase(lines.begin());
    return lines;
}

TEST_F(RecorderTest, KeepsEveryLineWithItsTimeAndDirection) {
    tether::Record record(host::TimePoint{}, false);
    ASSERT_TRUE(record.open(folder_ / "record"));
    {
        Recorder recorder(record, noted());
        recorder.add({Direction::error, "camera-sim", milliseconds(2)});
        recorder.add({Direction::from_worker, "READY|OK", milliseconds(1003)});
        recorder.add({Direction::to_worker, "CONNECT", milliseconds(1500)});
        recorder.add({Direction::from_worker, "", milliseconds(1501)});
        EXPECT_TRUE(recorder.flush(host::after(seconds(20))));
        EXPECT_EQ(lines_of(folder_ / "record"),
                  (std::vector<std::string>{"   0.002 ! camera-sim", "   1.003 < READY|OK",
                                            "   1.500 > CONNECT", "   1.501 < "}));
    }
    EXPECT_EQ(ended_early(), std::vector<std::string>{});
}

TEST_F(RecorderTest, ARedactedOneHoldsNeitherWhatStandsOnStandardErrorNorWhoAsks) {
    tether::Record record(host::TimePoint{}, true);
    ASSERT_TRUE(record.open(folder_ / "record"));
    {
        Recorder recorder(record, noted());
        recorder.add({Direction::error, "cannot read /Users/me/secret", seconds(1)});
        recorder.add_client("booth of me", "1.0");
        recorder.add({Direction::from_worker, "READY|OK", seconds(2)});
    }
    EXPECT_EQ(lines_of(folder_ / "record"),
              (std::vector<std::string>{"   1.000 ! <text>", "   1.000 # client: <text>",
                                        "   2.000 < READY|OK"}));
}

TEST_F(RecorderTest, SaysWhoAsks) {
    tether::Record record(host::TimePoint{}, false);
    ASSERT_TRUE(record.open(folder_ / "record"));
    {
        Recorder recorder(record, noted());
        recorder.add({Direction::from_worker, "READY|OK", seconds(2)});
        recorder.add_client("booth", "1.0");
    }
    EXPECT_EQ(lines_of(folder_ / "record"),
              (std::vector<std::string>{"   2.000 < READY|OK", "   2.000 # client: booth 1.0"}));
}

// A pipe whose reader goes away stands for a disk that is full.
TEST_F(RecorderTest, ADiskThatTakesNoMoreIsSaidOnceAndAtOnce) {
    signal(SIGPIPE, SIG_IGN);
    const fs::path pipe = folder_ / "record";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    host::Descriptor reader(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    tether::Record record(host::TimePoint{}, false);
    ASSERT_TRUE(record.open(pipe));
    reader.close();
    Recorder recorder(record, noted());
    for (int i = 0; i < 100; ++i) {
        recorder.add({Direction::from_worker, "line", milliseconds(i)});
    }
    EXPECT_TRUE(recorder.flush(host::after(seconds(60))));
    EXPECT_EQ(ended_early(), std::vector<std::string>{"Broken pipe"});
}

TEST_F(RecorderTest, WritesWhatWaitsAtTheEnd) {
    tether::Record record(host::TimePoint{}, false);
    ASSERT_TRUE(record.open(folder_ / "record"));
    {
        Recorder recorder(record, noted());
        for (int i = 0; i < 1000; ++i) {
            recorder.add({Direction::from_worker, "line " + std::to_string(i), milliseconds(i)});
        }
    }
    const auto lines = lines_of(folder_ / "record");
    ASSERT_EQ(lines.size(), 1000U);
    EXPECT_EQ(lines.back(), "   0.999 < line 999");
}

// A pipe that nobody reads stands for the disk.
TEST_F(RecorderTest, ADiskThatIsStuckHoldsNobodyUpAndTakesNoMemory) {
    const fs::path pipe = folder_ / "record";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const host::Descriptor reader(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    tether::Record record(host::TimePoint{}, false);
    ASSERT_TRUE(record.open(pipe));
    std::string all;
    {
        Recorder recorder(record, noted());
        const std::string text(10000, 'a');
        for (int i = 0; i < 2000; ++i) {
            recorder.add({Direction::from_worker, text, milliseconds(i)});
        }
        EXPECT_FALSE(recorder.flush(host::Clock::now()));
        EXPECT_EQ(ended_early(), std::vector<std::string>{"the disk was too slow for the lines"});
        std::thread disk([&] {
            fcntl(reader.number(), F_SETFL, 0);
            char bytes[65536];
            for (ssize_t count; (count = ::read(reader.number(), bytes, sizeof bytes)) > 0;) {
                all.append(bytes, static_cast<std::size_t>(count));
                if (all.find("the record ends here") != std::string::npos) {
                    return;
                }
            }
        });
        EXPECT_TRUE(recorder.flush(host::after(seconds(60))));
        disk.join();
    }
    EXPECT_LT(all.size(), std::size_t{9} << 20);
    EXPECT_GT(all.size(), std::size_t{7} << 20);
}

}  // namespace
}  // namespace serve
