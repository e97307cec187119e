#include "host/brain/session/fence.h"

#include <gtest/gtest.h>

namespace host::brain {
namespace {

using std::chrono::seconds;

TEST(Fence, AnAnswerPassesTheOldestAndNoOther) {
    Fence fence;
    const auto first = fence.sent(seconds(1));
    const auto second = fence.sent(seconds(2));
    EXPECT_FALSE(fence.passed(first));
    EXPECT_TRUE(fence.heard(seconds(3)));
    EXPECT_TRUE(fence.passed(first));
    EXPECT_FALSE(fence.passed(second));
    EXPECT_TRUE(fence.outstanding());
}

TEST(Fence, MoreAnswersThanWereAskedForCountForNothing) {
    Fence fence;
    EXPECT_FALSE(fence.heard(seconds(1)));
    const auto number = fence.sent(seconds(2));
    EXPECT_FALSE(fence.passed(number));
}

TEST(Fence, TheSilenceOfTheSecondBeginsWhenTheFirstIsAnswered) {
    Fence fence;
    fence.sent(seconds(1));
    fence.sent(seconds(2));
    EXPECT_EQ(fence.silent_since(), seconds(1));
    fence.heard(seconds(10));
    EXPECT_EQ(fence.silent_since(), seconds(10));
}

TEST(Fence, AStopIsNotHeldAgainstTheWorker) {
    Fence fence;
    fence.sent(seconds(1));
    fence.excuse(seconds(100));
    EXPECT_EQ(fence.silent_since(), seconds(100));
}

TEST(Fence, AnotherWorkerOwesNothing) {
    Fence fence;
    fence.sent(seconds(1));
    fence.forget(seconds(2));
    EXPECT_FALSE(fence.outstanding());
    EXPECT_EQ(fence.last(), seconds(2));
    EXPECT_FALSE(fence.heard(seconds(3)));
}

}  // namespace
}  // namespace host::brain
