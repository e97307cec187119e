// A host that was started without its standard streams.
#include "host/process/standard_streams.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sys/stat.h>

#include "tests/host/open_descriptors.h"

namespace {

bool is_dev_null(int number) {
    struct stat found {};
    struct stat null {};
    return fstat(number, &found) == 0 && stat("/dev/null", &null) == 0 &&
           found.st_rdev == null.st_rdev;
}

// Nothing is printed while one of them is away.
TEST(StandardStreams, ThoseThatAreClosedAreOpenedOnNothing) {
    std::fflush(stdout);
    for (unsigned closed = 0; closed < 8; ++closed) {
        bool before[3];
        bool afterwards[3];
        std::set<int> opened;
        for (int number = 0; number < 3; ++number) {
            before[number] = is_dev_null(number);
        }
        {
            const StandardStreamsClosed streams(closed);
            const std::set<int> open_before = open_numbers();
            errno = EBADF;  // of an earlier call
            host::open_closed_standard_streams();
            // A thread of an earlier test may be closing others.
            std::ranges::set_difference(open_numbers(), open_before,
                                        std::inserter(opened, opened.end()));
            for (int number = 0; number < 3; ++number) {
                afterwards[number] = is_dev_null(number);
            }
        }
        for (int number = 0; number < 3; ++number) {
            EXPECT_EQ(afterwards[number], before[number] || (closed >> number & 1u) != 0)
                << "stream " << number << " of the closed ones in " << closed;
        }
        EXPECT_EQ(std::ssize(opened), std::popcount(closed)) << closed;
    }
}

}  // namespace
