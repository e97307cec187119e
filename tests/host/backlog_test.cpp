// Lines that wait to be taken, and where the waiting ends.
#include "host/process/backlog.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "tests/sanitized.h"

namespace {

using host::Backlog;
using host::Line;
using host::OutputLimits;
using host::TimePoint;

TimePoint second(int number) {
    return TimePoint(std::chrono::seconds(number));
}

std::vector<std::string> texts_in(Backlog& backlog) {
    std::vector<std::string> texts;
    while (const auto line = backlog.take()) {
        texts.push_back(line->whole ? line->text : line->text + " (unfinished)");
    }
    return texts;
}

using Texts = std::vector<std::string>;

constexpr const char* too_long = "the worker wrote a line of more than 65,536 bytes and was ended";
constexpr const char* too_many =
    "the worker wrote faster than its lines were taken and was ended with more than 8,388,608 "
    "bytes waiting";

TEST(Backlog, EachLineHasTheTimeAtWhichItsEndWasRead) {
    Backlog backlog({});
    EXPECT_TRUE(backlog.add("one\ntwo\nth", second(1)));
    EXPECT_TRUE(backlog.add("r", second(2)));
    EXPECT_TRUE(backlog.add("ee\n\nfour", second(3)));
    backlog.finish(second(4));
    const std::vector<std::pair<std::string, int>> expected{
        {"one", 1}, {"two", 1}, {"three", 3}, {"", 3}, {"four", 4}};
    for (const auto& [text, number] : expected) {
        const auto line = backlog.take();
        ASSERT_TRUE(line);
        EXPECT_EQ(line->text, text);
        EXPECT_EQ(line->at, second(number)) << text;
        EXPECT_EQ(line->whole, text != "four");
    }
    EXPECT_FALSE(backlog.take());
}

TEST(Backlog, AnUnfinishedLineIsTakenOnlyOnceTheOutputHasEnded) {
    Backlog backlog({});
    EXPECT_TRUE(backlog.add("part", second(1)));
    EXPECT_FALSE(backlog.has_line());
    EXPECT_FALSE(backlog.take());
    backlog.finish(second(2));
    EXPECT_TRUE(backlog.has_line());
    EXPECT_EQ(texts_in(backlog), Texts{"part (unfinished)"});
    EXPECT_FALSE(backlog.has_line());
}

TEST(Backlog, ALineAsLongAsTheLimitIsTaken) {
    const std::string longest(65'536, 'x');
    Backlog backlog({});
    EXPECT_TRUE(backlog.add(longest + "\n" + longest + "\n", second(1)));
    EXPECT_TRUE(backlog.add(longest, second(1)));
    EXPECT_TRUE(backlog.add("\n" + longest, second(2)));
    backlog.finish(second(3));
    EXPECT_EQ(texts_in(backlog), (Texts{longest, longest, longest, longest + " (unfinished)"}));
    EXPECT_EQ(backlog.trouble(), "");
}

// However its bytes are cut when they are read, and whatever stands around it.
TEST(Backlog, ALineThatIsOneByteLongerEndsItAndTheLinesBeforeStay) {
    for (const std::string ending : {"\nafter\n", ""}) {
        const std::string bytes = "before\n\n" + std::string(65'537, 'x') + ending;
        for (const std::size_t cut : {std::size_t{1}, std::size_t{7}, std::size_t{8},
                                      std::size_t{100}, std::size_t{65'544}, bytes.size()}) {
            Backlog backlog({});
            bool good = true;
            for (std::size_t at = 0; good && at < bytes.size(); at += cut) {
                good = backlog.add(std::string_view(bytes).substr(at, cut), second(1));
            }
            EXPECT_FALSE(good);
            backlog.finish(second(2));
            EXPECT_EQ(backlog.trouble(), too_long);
            EXPECT_EQ(texts_in(backlog), (Texts{"before", ""})) << "cut every " << cut;
        }
    }
}

// Whatever the length of the lines, what waits is as much as the limit says, and not much less.
TEST(Backlog, MoreThanTheLimitOfWaitingBytesEndsItAndTheLinesStay) {
    for (const std::size_t length : {0u, 36u, 60'000u}) {
        const std::string line = std::string(length, 'x') + "\n";
        std::string bytes;
        do {
            bytes += line;
        } while (bytes.size() + line.size() <= 65'536);
        Backlog backlog({});
        std::size_t good = 0;
        while (backlog.add(bytes, second(1))) {
            good += bytes.size();
            ASSERT_LT(good, 9u << 20);
        }
        const std::size_t added = good + bytes.size();
        EXPECT_EQ(backlog.trouble(), too_many);
        EXPECT_GT(good, 8u * 1000 * 1000) << length;
        EXPECT_LE(good, 8u << 20) << length;
        if (length == 0) {
            continue;  // eight million lines take their time
        }
        std::size_t taken = 0;
        while (backlog.take()) {
            ++taken;
        }
        EXPECT_EQ(taken, added / line.size());
    }
}

TEST(Backlog, ManySmallReadingsAreCountedToo) {
    Backlog backlog({});
    std::size_t readings = 0;
    while (backlog.add("\n", second(1))) {
        ASSERT_LT(++readings, 1u << 20);
    }
    EXPECT_EQ(backlog.trouble(), too_many);
}

// In kibibytes; 0 where the system does not tell.
long memory_in_use() {
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;) {
        if (word == "VmRSS:") {
            long size = 0;
            file >> size;
            return size;
        }
    }
    return 0;
}

TEST(Backlog, WhatIsTakenInTimeHasNoEnd) {
    Backlog backlog({});
    const std::string bytes = "some line that stands for many\nand another\npart";
    const long before = memory_in_use();
    for (int round = 0; round < 200'000; ++round) {
        ASSERT_TRUE(backlog.add(bytes, second(round)));
        ASSERT_TRUE(backlog.take());
        ASSERT_TRUE(backlog.take());
    }
    EXPECT_FALSE(backlog.has_line());
    if (!sanitized) {
        EXPECT_LE(memory_in_use() - before, 4 * 1024) << "of the nine thousand that were taken";
    }
}

TEST(Backlog, LimitsCanBeChosen) {
    Backlog backlog(OutputLimits{3, 100});
    EXPECT_TRUE(backlog.add("abc\n", second(1)));
    EXPECT_FALSE(backlog.add("abcd", second(1)));
    EXPECT_EQ(backlog.trouble(), "the worker wrote a line of more than 3 bytes and was ended");
}

TEST(Backlog, ALineThatCameInPartsStaysBeforeOneThatIsTooLong) {
    Backlog backlog(OutputLimits{100, 1000});
    EXPECT_TRUE(backlog.add("a", second(1)));
    EXPECT_FALSE(backlog.add("b\n" + std::string(101, 'x'), second(1)));
    EXPECT_EQ(backlog.trouble(), "the worker wrote a line of more than 100 bytes and was ended");
    EXPECT_EQ(texts_in(backlog), Texts{"ab"});
}

// The other end of a pipe may give them one by one.
TEST(Backlog, TheBytesOfAnUnfinishedLineAreNotCountedAsReadings) {
    Backlog backlog(OutputLimits{100, 200});
    for (int number = 0; number < 100; ++number) {
        EXPECT_TRUE(backlog.add("x", second(1)));
    }
    EXPECT_TRUE(backlog.add("\n", second(1)));
}

TEST(Backlog, WhatWasTakenDoesNotCount) {
    Backlog backlog(OutputLimits{100, 1000});
    const std::string line = std::string(49, 'x') + "\n";
    const std::string ten = line + line + line + line + line + line + line + line + line + line;
    EXPECT_TRUE(backlog.add(ten, second(1)));
    EXPECT_TRUE(backlog.take() && backlog.take());
    EXPECT_TRUE(backlog.add(ten, second(1)));
    EXPECT_FALSE(backlog.add(line + line, second(1)));
}

TEST(Backlog, AnyMixtureOfReadingsAndTakingsGivesTheLinesInOrder) {
    constexpr unsigned seed = 20240229;
    std::mt19937 random(seed);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::pair<std::string, TimePoint>> expected;
        Backlog backlog(OutputLimits{100, 1 << 20});
        std::vector<Line> taken;
        std::string line;
        for (int number = 0; number < 300; ++number) {
            std::string chunk;
            for (auto left = random() % 40; left > 0; --left) {
                const char byte = random() % 8 == 0 || line.size() == 100
                                      ? '\n'
                                      : static_cast<char>('a' + random() % 26);
                chunk += byte;
                if (byte == '\n') {
                    expected.emplace_back(line, second(number));
                    line.clear();
                } else {
                    line += byte;
                }
            }
            ASSERT_TRUE(backlog.add(chunk, second(number)));
            for (auto left = random() % 6; left > 0; --left) {
                if (auto next = backlog.take()) {
                    taken.push_back(*next);
                }
            }
        }
        while (auto next = backlog.take()) {
            taken.push_back(*next);
        }
        ASSERT_EQ(taken.size(), expected.size());
        for (std::size_t at = 0; at < taken.size(); ++at) {
            ASSERT_EQ(taken[at].text, expected[at].first);
            ASSERT_EQ(taken[at].at, expected[at].second);
            ASSERT_TRUE(taken[at].whole);
        }
        backlog.finish(second(1000));
        ASSERT_EQ(texts_in(backlog), line.empty() ? Texts{} : Texts{line + " (unfinished)"});
    }
}

}  // namespace
