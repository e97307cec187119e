// The file with every line, and what becomes of it when it cannot be written.
#include "tether/conversation/record.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "tests/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using host::Clock;
using tether::Record;

class RecordTest : public testing::Test {
  protected:
    // Its lines, the first of which holds the date.
    std::vector<std::string> lines() const {
        std::ifstream stream(folder_ / "record");
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
    const host::TimePoint start_ = Clock::now();
};

TEST_F(RecordTest, TwoAtOnceDoNotShareAFile) {
    Record first(start_, false);
    ASSERT_TRUE(first.open(folder_ / "record"));
    // As the second finds it that opens it before the first has written anything.
    fs::resize_file(folder_ / "record", 0);
    Record second(start_, false);
    EXPECT_FALSE(second.open(folder_ / "record"));
    EXPECT_EQ(second.trouble(), "another program is writing to it");
}

TEST_F(RecordTest, LinesHaveTheirTimesAndDirections) {
    Record record(start_, false);
    ASSERT_TRUE(record.open(folder_ / "record"));
    record.add('>', "CONNECT|card", start_ + std::chrono::milliseconds(1234));
    record.add('<', "DOWNLOADED|/a/b.JPG", start_ + std::chrono::milliseconds(2000));
    record.note("interrupted", start_ + std::chrono::seconds(10000));
    // Read while it is still open: each line is there at once.
    const auto written = lines();
    ASSERT_EQ(written.size(), 4u);
    EXPECT_EQ(written[0].substr(0, 13), "   0.000 # 20");
    EXPECT_NE(written[0].find(" UTC, "), std::string::npos) << written[0];
    EXPECT_EQ(written[1], "   1.234 > CONNECT|card");
    EXPECT_EQ(written[2], "   2.000 < DOWNLOADED|/a/b.JPG");
    EXPECT_EQ(written[3], "10000.000 # interrupted");
    EXPECT_EQ(record.trouble(), "");
}

TEST_F(RecordTest, NamesAreLeftOutOnRequest) {
    Record record(start_, true);
    ASSERT_TRUE(record.open(folder_ / "record"));
    record.add('<', "DOWNLOADED|/a/b.JPG", start_);
    EXPECT_EQ(lines().back(), "   0.000 < DOWNLOADED|<folder>/<file 1>.JPG");
}

TEST_F(RecordTest, AFileWithSomethingInItIsLeftAsItIs) {
    std::ofstream(folder_ / "record") << "a picture, perhaps";
    fs::create_symlink("record", folder_ / "link");
    for (const char* name : {"record", "link"}) {
        Record record(start_, false);
        EXPECT_FALSE(record.open(folder_ / name));
        EXPECT_EQ(record.trouble(), "it is not empty, and a record replaces nothing");
        record.add('>', "CONNECT", start_);
        EXPECT_EQ(lines(), std::vector<std::string>{"a picture, perhaps"});
    }
}

TEST_F(RecordTest, AnEmptyFileIsTaken) {
    std::ofstream(folder_ / "record").flush();
    Record record(start_, false);
    ASSERT_TRUE(record.open(folder_ / "record"));
    EXPECT_EQ(lines().size(), 1u);
}

TEST_F(RecordTest, ItSaysWhyItCannotBegin) {
    Record nowhere(start_, false);
    EXPECT_FALSE(nowhere.open(folder_ / "no/such/folder"));
    EXPECT_EQ(nowhere.trouble(), "No such file or directory");
    if (fs::exists("/dev/full")) {
        Record full(start_, false);
        EXPECT_FALSE(full.open("/dev/full"));
        EXPECT_EQ(full.trouble(), "No space left on device");
    }
}

TEST_F(RecordTest, ItSaysWhyItEndsAndHasNoHole) {
    const fs::path pipe = folder_ / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    Record record(start_, false);
    ASSERT_TRUE(record.open(pipe));
    close(reader);
    record.add('>', "lost", start_);
    EXPECT_EQ(record.trouble(), "Broken pipe");
    reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    record.add('>', "not written behind a lost one", start_);
    char byte = 0;
    EXPECT_EQ(read(reader, &byte, 1), 0);
    close(reader);
}

TEST_F(RecordTest, WithoutAFileNothingHappens) {
    Record record(start_, false);
    record.add('>', "CONNECT", start_);
    record.note("interrupted", start_);
    EXPECT_EQ(record.trouble(), "");
}

}  // namespace
