#include "tether/serve/recorder.h"

#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/process/pipe.h"

namespace serve {
namespace {

namespace fs = std::filesystem;
using Direction = host::WireLine::Direction;
using std::chrono::milliseconds;
using std::chrono::seconds;

class RecorderTest : public testing::Test {
  protected:
    RecorderTest() {
        std::string folder = testing::TempDir() + "recorder-XXXXXX";
        folder_ = mkdtemp(folder.data());
    }
    ~RecorderTest() override {
        fs::remove_all(folder_);
    }

    fs::path folder_;
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
        Recorder recorder(record);
        recorder.add({Direction::error, "camera-sim", milliseconds(2)});
        recorder.add({Direction::from_worker, "READY|OK", milliseconds(1003)});
        recorder.add({Direction::to_worker, "CONNECT", milliseconds(1500)});
        recorder.add({Direction::from_worker, "", milliseconds(1501)});
        EXPECT_TRUE(recorder.flush(host::after(seconds(20))));
        EXPECT_EQ(lines_of(folder_ / "record"),
                  (std::vector<std::string>{"   0.002 ! camera-sim", "   1.003 < READY|OK",
                                            "   1.500 > CONNECT", "   1.501 < "}));
    }
}

TEST_F(RecorderTest, WritesWhatWaitsAtTheEnd) {
    tether::Record record(host::TimePoint{}, false);
    ASSERT_TRUE(record.open(folder_ / "record"));
    {
        Recorder recorder(record);
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
        Recorder recorder(record);
        const std::string text(10000, 'a');
        for (int i = 0; i < 2000; ++i) {
            recorder.add({Direction::from_worker, text, milliseconds(i)});
        }
        EXPECT_FALSE(recorder.flush(host::Clock::now()));
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
