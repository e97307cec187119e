// The queue between a camera and a command.
#include "tether/live/happenings.h"

#include <gtest/gtest.h>

namespace {

using tether::Happening;
using tether::Happenings;

std::optional<Happening> next(Happenings& happenings) {
    return happenings.next(host::Clock::now());
}

TEST(HappeningsTest, AllComesInOrder) {
    Happenings happenings;
    happenings.post(host::WireLine{host::WireLine::Direction::from_worker, "one", {}});
    happenings.post(Happening(host::Picture{}));
    happenings.post(host::Problem{});
    happenings.post(Happening(tether::Interrupted{}));
    EXPECT_TRUE(std::holds_alternative<host::WireLine>(*next(happenings)));
    EXPECT_TRUE(std::holds_alternative<host::Picture>(*next(happenings)));
    EXPECT_TRUE(std::holds_alternative<host::Problem>(*next(happenings)));
    EXPECT_TRUE(std::holds_alternative<tether::Interrupted>(*next(happenings)));
    EXPECT_FALSE(next(happenings));
}

TEST(HappeningsTest, OfStatesTheLatestWaits) {
    Happenings happenings;
    for (const auto state : {host::State::idle, host::State::opening, host::State::ready}) {
        host::SessionState told;
        told.state = state;
        happenings.post(told);
    }
    EXPECT_EQ(std::get<host::SessionState>(*next(happenings)).state, host::State::ready);
    EXPECT_FALSE(next(happenings));
}

// Nobody reads: a terminal is stopped, or its window is.
TEST(HappeningsTest, LinesThatNobodyReadsAreLeftOutAndCounted) {
    Happenings happenings;
    const host::WireLine line{host::WireLine::Direction::from_worker, std::string(50'000, 'x'), {}};
    for (int count = 0; count < 1000; ++count) {
        happenings.post(line);
    }
    happenings.post(host::Problem{host::Code::worker_floods, "text", {}, {}});
    happenings.post(Happening(host::Picture{}));
    std::size_t lines = 0;
    std::optional<Happening> happening;
    while ((happening = next(happenings)) && std::holds_alternative<host::WireLine>(*happening)) {
        ++lines;
    }
    EXPECT_LT(lines, 90u) << "4 MiB at most";
    EXPECT_TRUE(std::holds_alternative<host::Problem>(*happening)) << "no line keeps one away";
    EXPECT_TRUE(std::holds_alternative<host::Picture>(*next(happenings)));
    happenings.post(line);
    EXPECT_EQ(std::get<tether::LeftOut>(*next(happenings)).count, 1000 - lines);
    EXPECT_TRUE(std::holds_alternative<host::WireLine>(*next(happenings)));
}

}  // namespace
