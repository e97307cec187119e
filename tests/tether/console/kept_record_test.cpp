#include "tether/console/kept_record.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>

#include "tests/temporary_folder.h"
#include "tether/conversation/record.h"
#include "tether/conversation/record_line.h"

namespace console {
namespace {

namespace fs = std::filesystem;

constexpr host::TimePoint start{};

std::string all_of(const KeptRecord& kept, bool redact = false) {
    const auto pieces = kept.pieces(redact);
    std::string text;
    while (const auto piece = pieces(text.size())) {
        text += *piece;
    }
    return text;
}

// The record is kept on another thread.
std::string all_up_to(const KeptRecord& kept, const std::string& end, bool redact = false) {
    const host::TimePoint deadline = host::after(std::chrono::seconds(60));
    std::string text;
    do {
        text = all_of(kept, redact);
    } while (text.find(end) == std::string::npos && host::Clock::now() < deadline);
    return text;
}

TEST(KeptRecord, IsWhatTheSessionHasWritten) {
    const KeptRecord kept("");
    tether::Record record(start, false);
    ASSERT_TRUE(record.open(kept.path())) << record.trouble();
    record.add('>', "SET_DOWNLOAD_DIR|/Users/me/Shots", start);
    record.add('<', "DOWNLOADED|/Users/me/Shots/DSC00001.JPG", start);
    const std::string text = all_up_to(kept, "DSC00001.JPG\n");
    EXPECT_NE(text.find(" > SET_DOWNLOAD_DIR|/Users/me/Shots\n"), std::string::npos) << text;
    record.add('<', "READY|OK", start);
    EXPECT_EQ(all_up_to(kept, "READY").find(text), 0U) << "it goes on";
}

// Whatever can be downloaded can be played.
void expect_a_record(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        const std::string line = text.substr(at, end - at);
        EXPECT_TRUE(tether::read_record_line(line)) << line;
        at = end + 1;
    }
}

TEST(KeptRecord, CanBeHadWithoutPathsAndNames) {
    const KeptRecord kept("");
    tether::Record record(start, false);
    ASSERT_TRUE(record.open(kept.path()));
    record.add('<', "DOWNLOADED|/Users/me/Shots/DSC00001.JPG", start);
    record.add('<', "CONNECTED|My camera", start);
    record.add('!', "a sentence with /Users/me in it", start);
    record.add('<', "half a line of /Users/me", start, false);
    record.add('<', "LOG|a byte \x01 of /Users/me", start);
    record.note("a remark", start);
    const std::string text = all_up_to(kept, "a remark\n", true);
    expect_a_record(text);
    EXPECT_NE(text.find(" < DOWNLOADED|<folder>/<file 1>.JPG\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" < CONNECTED|<camera 1>\n"), std::string::npos) << text;
    EXPECT_NE(text.find(" ! <text>\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("/Users"), std::string::npos) << text;
    EXPECT_EQ(text.substr(0, all_of(kept).find('\n')),
              all_of(kept).substr(0, all_of(kept).find('\n')));
}

TEST(KeptRecord, EndsInOrderWhenItIsFull) {
    const KeptRecord kept("", 1000);
    tether::Record record(start, false);
    ASSERT_TRUE(record.open(kept.path()));
    for (int count = 0; count < 10'000; ++count) {
        record.add('<', "LOG|[SONY] line " + std::to_string(count), start);
    }
    EXPECT_EQ(record.trouble(), "") << "the session notices nothing";
    const std::string end = "# the record that can be downloaded ends here: it is full\n";
    const std::string text = all_up_to(kept, end);
    EXPECT_LE(text.size(), 1000 + std::string("12345.678 ").size() + end.size());
    expect_a_record(text);
    EXPECT_EQ(text.substr(text.size() - end.size()), end);
    EXPECT_EQ(text.substr(0, text.size() - end.size()).back(), ' ') << "behind its time";
}

TEST(KeptRecord, IsTheUsersOwnFileWhenThereIsOne) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "record";
    {
        const KeptRecord kept(file);
        EXPECT_EQ(kept.path(), file);
        EXPECT_EQ(all_of(kept), "");
        tether::Record record(start, false);
        ASSERT_TRUE(record.open(kept.path()));
        record.add('>', "CONNECT", start);
        std::ifstream stream(file);
        EXPECT_EQ(all_of(kept), std::string(std::istreambuf_iterator<char>(stream), {}));
    }
    EXPECT_TRUE(fs::exists(file));
}

}  // namespace
}  // namespace console
