// Which RAW files are all there.

#include <vector>

#include "tests/host/pictures/whole_file.h"

namespace {

class WholeRaw : public Whole {};

const std::string early = "it ends before its picture does";
const std::string no_picture = "it ends before its picture";
const std::string damaged = "its directories are damaged";

struct TiffEntry {
    std::uint64_t tag, type, count, value;
};

// One directory, and the bytes behind it from `tiff_data` on.
constexpr std::uint64_t tiff_data = 100;
std::string tiff(bool little, const std::vector<TiffEntry>& entries, std::uint64_t next = 0) {
    std::string file = little ? "II" : "MM";
    const auto add = [&](std::uint64_t number, unsigned int bytes) {
        for (unsigned int index = 0; index < bytes; ++index) {
            file += static_cast<char>(number >> 8 * (little ? index : bytes - 1 - index));
        }
    };
    add(42, 2);
    add(8, 4);
    add(entries.size(), 2);
    for (const TiffEntry& entry : entries) {
        add(entry.tag, 2);
        add(entry.type, 2);
        add(entry.count, 4);
        add(entry.value, 4);
    }
    add(next, 4);
    file.resize(tiff_data, '\0');
    // Two strips: of 4 bytes here, and of 200 behind them.
    for (const std::uint64_t number : {tiff_data, tiff_data + 4, 4UL, 200UL}) {
        add(number, 4);
    }
    return file.append(300, 'x');
}

constexpr TiffEntry offsets{0x0111, 4, 2, tiff_data};
constexpr TiffEntry sizes{0x0117, 4, 2, tiff_data + 8};

TEST_F(WholeRaw, ARawNeedsAllThatItsDirectoriesName) {
    for (const bool little : {true, false}) {
        const std::string whole = tiff(little, {offsets, sizes});
        const std::uint64_t end = whole.size();
        EXPECT_EQ(why(whole, "a.ARW"), "");
        EXPECT_EQ(why(tiff(little, {}), "a.ARW"), no_picture);
        for (const std::size_t wrong : {0, 2, 3}) {
            std::string other = whole;
            other[wrong] = '+';
            EXPECT_EQ(why(other, "a.ARW"), "it does not begin as a RAW does") << wrong;
        }
        // Where the first entry's count, and where the next directory's place was.
        for (const std::size_t left : {14, 34}) {
            EXPECT_EQ(why_shrunk(whole.substr(0, left), end, "a.ARW"), no_picture) << left;
        }
        EXPECT_EQ(why(whole.substr(0, tiff_data + 203), "a.ARW"), early) << "the second strip";
        EXPECT_EQ(why(tiff(little, {offsets, sizes}, end), "a.ARW"), early);
        for (const std::uint64_t below : {0x014A, 0x8769, 0x8825}) {
            EXPECT_EQ(why(tiff(little, {offsets, sizes, {below, 4, 1, end}}), "a.ARW"), early);
        }
        std::uint64_t type = 0;
        for (const std::uint64_t bytes : {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0}) {
            const auto with = [&](std::uint64_t value) {
                return why(tiff(little, {{1, type, 10, value}, offsets, sizes}), "a.ARW");
            };
            EXPECT_EQ(with(end - 10 * bytes), "") << type;
            EXPECT_EQ(with(end - 10 * bytes + 1), bytes == 0 ? "" : early) << type;
            ++type;
        }
        EXPECT_EQ(why(tiff(little, {{1, 1, 4, ~0U}, offsets, sizes}), "a.ARW"), "");
        EXPECT_EQ(why(tiff(little, {{1, 1, 5, ~0U}, offsets, sizes}), "a.ARW"), early);
    }
}

TEST_F(WholeRaw, EveryPlaceHasASizeAndLiesInside) {
    for (const bool little : {true, false}) {
        const std::uint64_t end = tiff(little, {}).size();
        for (const std::uint64_t alone : {0x0111, 0x0117, 0x0144, 0x0145, 0x0201, 0x0202}) {
            std::vector<TiffEntry> entries{{alone, 4, 1, tiff_data}};
            if (alone > 0x0117) {
                entries.insert(entries.end(), {offsets, sizes});
            }
            EXPECT_EQ(why(tiff(little, entries), "a.ARW"), damaged) << alone;
        }
        const TiffEntry preview{0x0201, 4, 1, tiff_data};
        const TiffEntry preview_size{0x0202, 4, 1, 4};
        // Numbers of one byte name no place and no size.
        for (const std::vector<TiffEntry>& entries :
             {std::vector<TiffEntry>{{0x0111, 1, 1, 9}, {0x0117, 1, 1, 9}},
              {{0x0111, 1, 1, 9}, preview, preview_size},
              {{0x0117, 1, 1, 9}, preview, preview_size}}) {
            EXPECT_EQ(why(tiff(little, entries), "a.ARW"), damaged);
        }
        const auto strip = [&](std::uint64_t at, std::uint64_t size) {
            return why(tiff(little, {{0x0111, 4, 1, at}, {0x0117, 4, 1, size}}), "a.ARW");
        };
        EXPECT_EQ(strip(end - 1, 1), "");
        EXPECT_EQ(strip(end - 1, 2), early);
        EXPECT_EQ(strip(end, 0), no_picture);
        EXPECT_EQ(strip(end + 1, 0), early);
        EXPECT_EQ(strip(0, ~0U), early);
    }
}

TEST_F(WholeRaw, ADirectoryNeedsItsLastByte) {
    for (const bool little : {true, false}) {
        const std::string file = tiff(little, {offsets, sizes}, tiff(little, {}).size());
        const std::string one(1, '\1');
        const std::string none(1, '\0');
        const std::string count = little ? one + none : none + one;
        for (const std::string& second : {std::string(6, '\0'), count + std::string(16, '\0')}) {
            EXPECT_EQ(why(file + second, "a.ARW"), "");
            EXPECT_EQ(why(file + second.substr(0, second.size() - 1), "a.ARW"), early);
        }
    }
}

TEST_F(WholeRaw, MoreDirectoriesOrNumbersThanACameraWritesAreDamage) {
    const std::uint64_t end = tiff(true, {}).size();
    // The first 100 bytes behind the end are empty directories, wherever one begins.
    const auto with = [&](const std::vector<std::uint64_t>& below) {
        std::string file = tiff(true, {offsets, sizes, {0x014A, 4, below.size(), end + 100}}) +
                           std::string(100, '\0');
        for (const std::uint64_t directory : below) {
            file += little_endian(directory, 4);
        }
        return why(file, "a.ARW");
    };
    std::vector<std::uint64_t> below{8, 8, end};
    for (std::uint64_t directory = 0; directory < 63; ++directory) {
        below.push_back(end + directory);
    }
    EXPECT_EQ(with(below), "") << "64 with the first one, whose place is 8";
    below.push_back(end + 63);
    EXPECT_EQ(with(below), damaged);
    EXPECT_EQ(with({8, end, end, ~0U}), early) << "the last one is looked for";

    // As many numbers as are read; one more says where the next directory is.
    const std::uint64_t half = std::uint64_t{1} << 17;
    const std::string places(2 * half, '\1');
    const std::vector<TiffEntry> strips{{0x0111, 3, half, end}, {0x0117, 3, half, end}};
    EXPECT_EQ(why(tiff(true, strips) + places, "a.ARW"), "");
    EXPECT_EQ(why(tiff(true, strips, 8) + places, "a.ARW"), damaged);
}

TEST_F(WholeRaw, DirectoriesThatNameEachOtherAreReadOnce) {
    std::string content = sample_raw("picture");
    // The second directory's next one is the first.
    const std::size_t entry = 12;
    const std::size_t second = 8 + 2 + 5 * entry + 4;
    content[second + 2 + 2 * entry] = 8;
    EXPECT_EQ(why(content, "a.ARW"), "");
}

}  // namespace
