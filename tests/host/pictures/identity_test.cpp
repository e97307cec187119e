// Which file it is.
#include "host/pictures/disk/identity.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>

#include "tests/host/pictures/desk.h"

namespace {

using namespace host::pictures;

// Where device numbers have a sign, as on a Mac, the highest ones look negative.
TEST(Identity, HasADevicesNumberWithoutASign) {
    struct stat facts {};
    facts.st_dev = static_cast<dev_t>(-1);
    EXPECT_EQ(identity_of(facts).device, std::numeric_limits<std::make_unsigned_t<dev_t>>::max());
}

TEST(Identity, IsAFilesNumberWithItsSizeAndTime) {
    const TemporaryFolder folder;
    write_file(folder.path() / "file", "four");
    const timespec times[] = {{1, 2}, {1714567890, 123456789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder.path() / "file").c_str(), times, 0), 0);
    struct stat facts {};
    ASSERT_EQ(::stat((folder.path() / "file").c_str(), &facts), 0);
    EXPECT_EQ(facts_of(facts), (FileFacts{{facts.st_dev, facts.st_ino}, 4, 1714567890123456789}));
}

TEST(Identity, OfAFileStaysWhereADiskGivesItAnotherNumber) {
    constexpr std::int64_t time = 1714567890000000000;
    const FileFacts file{{1, 10}, 100, time};
    EXPECT_TRUE(is_same_file(file, {{2, 10}, 100, 0})) << "its number";
    EXPECT_FALSE(is_same_file(file, {{1, 10}, 101, time}));
    for (const std::int64_t apart : {std::int64_t{0}, coarse_time, -coarse_time}) {
        EXPECT_TRUE(is_same_file(file, {{1, 11}, 100, time + apart})) << apart;
        EXPECT_FALSE(is_same_file(file, {{1, 11}, 99, time + apart})) << apart;
    }
    for (const std::int64_t apart : {coarse_time + 1, -coarse_time - 1}) {
        EXPECT_FALSE(is_same_file(file, {{1, 11}, 100, time + apart})) << apart;
    }
    EXPECT_EQ(coarse_time, 2'000'000'000);
}

}  // namespace
