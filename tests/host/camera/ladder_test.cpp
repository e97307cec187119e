// The steps by which a worker is ended.
#include "host/camera/ladder.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using host::Ladder;
using host::Time;
using host::WorkerEnd;
using std::chrono::seconds;

TEST(LadderTest, EachStepIsTakenInItsTime) {
    Ladder ladder;
    EXPECT_EQ(ladder.wake_at(), Time::max());
    EXPECT_EQ(ladder.next(seconds(100)), std::nullopt);
    ladder.begin(seconds(5), seconds(100));
    EXPECT_EQ(ladder.next(seconds(100)), WorkerEnd::quit);
    EXPECT_EQ(ladder.next(seconds(104)), std::nullopt);
    EXPECT_EQ(ladder.wake_at(), seconds(105));
    EXPECT_EQ(ladder.next(seconds(105)), WorkerEnd::input);
    EXPECT_EQ(ladder.next(seconds(105)), std::nullopt);
    EXPECT_EQ(ladder.next(seconds(110)), WorkerEnd::sigterm);
    EXPECT_EQ(ladder.next(seconds(115)), WorkerEnd::sigkill);
    EXPECT_EQ(ladder.wake_at(), Time::max());
    ladder.missed(seconds(1000));
    EXPECT_EQ(ladder.next(seconds(1000)), std::nullopt) << "there is no step behind it";
    EXPECT_EQ(ladder.step(), WorkerEnd::sigkill);
}

// A process that was stopped for a minute has not given its worker that minute.
TEST(LadderTest, NoStepIsSkippedHoweverLateItIs) {
    Ladder ladder;
    ladder.begin(seconds(1), seconds(0));
    EXPECT_EQ(ladder.next(seconds(60)), WorkerEnd::quit);
    EXPECT_EQ(ladder.next(seconds(60)), std::nullopt);
    EXPECT_EQ(ladder.next(seconds(61)), WorkerEnd::input);
}

TEST(LadderTest, AQuitThatCannotBeSaidIsNotWaitedFor) {
    Ladder ladder;
    ladder.begin(seconds(5), seconds(0));
    EXPECT_EQ(ladder.next(seconds(0)), WorkerEnd::quit);
    ladder.missed(seconds(0));
    EXPECT_EQ(ladder.next(seconds(0)), WorkerEnd::input);
    EXPECT_EQ(ladder.next(seconds(0)), std::nullopt);
}

TEST(LadderTest, ASecondBeginningChangesNothing) {
    Ladder ladder;
    ladder.begin(seconds(1), seconds(0));
    EXPECT_EQ(ladder.next(seconds(0)), WorkerEnd::quit);
    ladder.begin(seconds(5), seconds(0));
    EXPECT_EQ(ladder.next(seconds(0)), std::nullopt);
    EXPECT_EQ(ladder.next(seconds(1)), WorkerEnd::input);
    EXPECT_EQ(ladder.next(seconds(2)), WorkerEnd::sigterm);
}

}  // namespace
