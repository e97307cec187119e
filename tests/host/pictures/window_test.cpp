// A file's bytes, read a piece at a time.

#include "host/pictures/whole/window.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>
#include <unistd.h>

#include "tests/host/pictures/desk.h"

namespace {

using host::pictures::Window;

// Three pieces, the last one short; no two neighbours are alike and none is 0xFF.
class AWindow : public testing::Test {
  protected:
    static constexpr std::uint64_t piece = std::uint64_t{32} * 1024;
    static constexpr std::uint64_t size = 2 * piece + 10;
    static constexpr std::uint64_t huge = std::numeric_limits<std::uint64_t>::max();

    AWindow() {
        for (std::uint64_t at = 0; at < size; ++at) {
            content_ += static_cast<char>(value(at));
        }
    }
    ~AWindow() override {
        ::close(file_);
    }
    static std::uint8_t value(std::uint64_t at) {
        return static_cast<std::uint8_t>(1 + at % 251);
    }
    Window open(std::uint64_t said) {
        const fs::path path = folder_.path() / "file";
        write_file(path, content_);
        ::close(file_);
        file_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        return {file_, said};
    }

    std::string content_;

  private:
    TemporaryFolder folder_;
    int file_ = -1;
};

TEST_F(AWindow, HasEveryByteInAnyOrderAndNoneBehindTheEnd) {
    Window window = open(size);
    for (const std::uint64_t at : {std::uint64_t{0}, piece - 1, piece, size - 1, piece + 1,
                                   2 * piece, 2 * piece - 1, std::uint64_t{1}}) {
        EXPECT_EQ(window.byte(at), value(at)) << at;
    }
    for (const std::uint64_t at : {size, size + 1, 3 * piece, huge}) {
        EXPECT_EQ(window.byte(at), std::nullopt) << at;
    }
    content_ = "x";
    EXPECT_EQ(open(1).byte(0), 'x');
}

TEST_F(AWindow, ReadsNumbersInBothOrders) {
    Window window = open(size);
    for (const std::uint64_t at : {std::uint64_t{0}, piece - 1, size - 2}) {
        const std::uint64_t first = value(at);
        const std::uint64_t second = value(at + 1);
        EXPECT_EQ(window.big_endian(at, 2), first << 8 | second) << at;
        EXPECT_EQ(window.little_endian(at, 2), second << 8 | first) << at;
    }
    EXPECT_EQ(window.big_endian(0, 8), 0x0102030405060708U);
    EXPECT_EQ(window.little_endian(0, 8), 0x0807060504030201U);
    for (const std::uint64_t at : {size - 1, size, huge}) {
        EXPECT_EQ(window.big_endian(at, 2), std::nullopt) << at;
        EXPECT_EQ(window.little_endian(at, 2), std::nullopt) << at;
    }
}

TEST_F(AWindow, FindsTheNextMark) {
    const std::uint64_t last = size - 1;
    for (const std::uint64_t at : {std::uint64_t{5}, piece - 1, piece, 2 * piece + 3, last}) {
        content_[at] = '\xFF';
    }
    Window window = open(size);
    for (const auto& [from, found] : {std::pair{std::uint64_t{0}, std::uint64_t{5}},
                                      {std::uint64_t{5}, std::uint64_t{5}},
                                      {std::uint64_t{6}, piece - 1},
                                      {piece, piece},
                                      {piece + 100, 2 * piece + 3},
                                      {2 * piece + 4, last},
                                      {size, size}}) {
        EXPECT_EQ(window.next_ff(from), found) << from;
    }
    content_ = std::string(size, 'x');
    EXPECT_EQ(open(size).next_ff(0), size);
}

TEST_F(AWindow, OfAFileThatHasShrunkHasWhatIsThere) {
    content_.resize(piece + 1);
    Window window = open(size);
    EXPECT_EQ(window.byte(piece), value(piece));
    EXPECT_EQ(window.byte(piece + 1), std::nullopt);
    EXPECT_EQ(window.byte(2 * piece), std::nullopt);
    EXPECT_EQ(window.next_ff(0), size);
}

TEST_F(AWindow, OfAFileThatHasGrownHasWhatWasThere) {
    content_[piece + 15] = '\xFF';
    Window window = open(piece + 10);
    EXPECT_EQ(window.byte(piece + 9), value(piece + 9));
    EXPECT_EQ(window.byte(piece + 10), std::nullopt);
    EXPECT_EQ(window.byte(2 * piece), std::nullopt);
    EXPECT_EQ(window.next_ff(piece), piece + 10);
}

}  // namespace
