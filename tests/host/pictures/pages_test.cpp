// The pictures of a ledger in pages, whatever has become of the ledger since the page before.

#include "host/pictures/ledger/pages.h"

#include <numeric>

#include "tests/host/pictures/long_ledger.h"

namespace {

using namespace host::pictures;

using Numbers = std::vector<std::uint64_t>;

Numbers from_to(std::uint64_t first, std::uint64_t last) {
    Numbers numbers(last + 1 - first);
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

class PagesTest : public OpenLedger {
  protected:
    Numbers behind(std::uint64_t number, std::size_t limit) {
        return numbers_of(pages_.behind(write_id(number), ledger_, limit));
    }

    Pages pages_;
};

TEST_F(PagesTest, PagesOfAnySizeAreTheWholeInItsOrder) {
    add(long_ledger(1, 3000));
    for (const std::size_t limit : {1U, 7U, 100U, 999U, 3000U, 5000U}) {
        Numbers all;
        for (Numbers page = behind(0, limit); !page.empty(); page = behind(all.back(), limit)) {
            EXPECT_LE(page.size(), limit);
            all.insert(all.end(), page.begin(), page.end());
        }
        EXPECT_EQ(all, from_to(1, 3000)) << limit;
    }
}

TEST_F(PagesTest, AnyPictureCanBeAskedBehind) {
    add(long_ledger(1, 1000) + "{\"placed\":\"no id\"}\n" + long_ledger(1001, 2000));
    for (const std::uint64_t number : {1999U, 1U, 1000U, 2U, 1998U}) {
        EXPECT_EQ(behind(number, 5), from_to(number + 1, std::min<std::uint64_t>(number + 5, 2000)))
            << number;
    }
    EXPECT_TRUE(behind(2000, 5).empty());
    EXPECT_EQ(behind(2001, 5), from_to(1, 5)) << "no picture of this ledger";
    EXPECT_EQ(numbers_of(pages_.behind("no id", ledger_, 5)), from_to(1, 5));
}

TEST_F(PagesTest, MorePicturesComeBehindTheLastPage) {
    add(long_ledger(1, 10));
    EXPECT_EQ(behind(5, 100), from_to(6, 10));
    EXPECT_TRUE(behind(10, 100).empty());
    add(long_ledger(11, 12));
    EXPECT_EQ(behind(10, 100), from_to(11, 12));
}

TEST_F(PagesTest, AnotherLedgerInItsPlaceIsSeen) {
    add(long_ledger(1, 10));
    EXPECT_EQ(behind(0, 5), from_to(1, 5));
    // Nothing of what was remembered is where it was.
    write_file(path(), "{}\n" + long_ledger(4, 8));
    EXPECT_EQ(behind(5, 5), from_to(6, 8));
    write_file(path(), "");
    EXPECT_TRUE(behind(5, 5).empty());
    add(long_ledger(20, 22));
    EXPECT_EQ(behind(5, 5), from_to(20, 22));
}

TEST_F(PagesTest, APictureThatWasAnnouncedLongBeforeItWasPlacedIsNotLeftOut) {
    const std::string cut = long_ledger(100, 100);
    const std::size_t line = cut.find('\n') + 1;
    // What announced the first one is lost.
    add(write_entry(PlacedAs{write_id(99)}) + cut.substr(0, line) + long_ledger(1, 10) +
        cut.substr(line) + long_ledger(11, 12));
    EXPECT_EQ(behind(0, 2), (Numbers{1, 2}));
    EXPECT_EQ(behind(9, 2), (Numbers{10, 100}));
    EXPECT_EQ(behind(100, 2), (Numbers{11, 12}));
    EXPECT_EQ(behind(10, 9), (Numbers{100, 11, 12}));
    write_file(path(), cut.substr(0, line) + long_ledger(1, 10) + cut.substr(line));
    EXPECT_EQ(behind(9, 2), (Numbers{10, 100})) << "announced by the first line";
}

// What looks like the line that is looked for, in a name.
TEST_F(PagesTest, TheLineOfAPictureIsAWholeLine) {
    add("x{\"placed\":\"" + write_id(3) + "\"}\n" + long_ledger(1, 4) + "x{\"placed\":\"" +
        write_id(3) + "\"}\n");
    EXPECT_EQ(behind(3, 9), (Numbers{4}));
    // Its beginning and its end in two readings.
    for (std::size_t shift = 0; shift < 70; ++shift) {
        write_file(path(), long_ledger(1, 1) + std::string(LedgerLines::longest - shift, '\n'));
        EXPECT_TRUE(behind(1, 9).empty()) << shift;
        pages_ = {};
    }
}

}  // namespace
