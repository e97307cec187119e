// What a page of pictures costs the disk.

#include "tests/host/pictures/disk_calls.h"
#include "tests/host/pictures/long_ledger.h"

namespace {

// Read whole it would take a hundred readings.
constexpr std::uint64_t longest = 20'000;

class PageCost : public testing::Test {
  protected:
    PageCost() : desk_(folder_.path()) {
        fs::create_directory(folder_.path() / ".incoming");
        write_file(folder_.path() / ".incoming/ledger", long_ledger(1, longest));
        desk_.open();
    }
    ~PageCost() override {
        disk_calls::before_reading = {};
    }
    // Of at most 64 KiB each, and how many a page of 100 took.
    int readings_behind(std::uint64_t number, std::uint64_t first) {
        int readings = 0;
        disk_calls::before_reading = [&] {
            ++readings;
            return 0;
        };
        const std::string id = number == 0 ? "" : host::pictures::write_id(number);
        const auto page = desk_.store().list("", id, 100);
        disk_calls::before_reading = {};
        EXPECT_EQ(page.size(), 100U);
        EXPECT_EQ(page.empty() ? 0 : numbers_of(page).front(), first);
        return readings;
    }

    TemporaryFolder folder_{quick_disk()};
    Desk desk_;
};

TEST_F(PageCost, IsThatOfThePageHoweverLongTheLedger) {
    const int first = readings_behind(0, 1);
    EXPECT_LE(first, 2);
    // The middle of the ledger is looked for once.
    readings_behind(longest / 2, longest / 2 + 1);
    for (const std::uint64_t from : {std::uint64_t{100}, longest / 2 + 100}) {
        for (std::uint64_t last = from; last < from + 2000; last += 100) {
            // And one to see that the line is still there.
            ASSERT_LE(readings_behind(last, last + 1), first + 2) << last;
        }
    }
}

// As many as turn pages at the same time, and one who asks for the same page again and again.
TEST_F(PageCost, StaysSmallForEachOfMany) {
    const std::uint64_t middle = longest / 2;
    const int small = readings_behind(0, 1) + 2;
    EXPECT_GT(readings_behind(middle, middle + 1), small);
    for (int time = 0; time < 70; ++time) {
        EXPECT_LE(readings_behind(middle, middle + 1), small);
    }
    // Each is known by where it began and where it ended: 64 places, with those above.
    for (std::uint64_t reader = 1; reader <= 30; ++reader) {
        readings_behind(longest - 100 - 3 * reader, longest - 99 - 3 * reader);
    }
    readings_behind(100, 101);
    EXPECT_LE(readings_behind(100, 101), small) << "the first of all";
    EXPECT_LE(readings_behind(middle, middle + 1), small);
    readings_behind(200, 201);
    EXPECT_LE(readings_behind(middle + 100, middle + 101), small) << "with one more";
}

TEST_F(PageCost, ForOneWhoHasNewsOfTheLatestIsSmallToo) {
    EXPECT_LE(readings_behind(longest - 100, longest - 99), 6);
}

}  // namespace
