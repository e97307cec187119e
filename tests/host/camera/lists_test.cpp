// Lists of pictures, from a disk that may be stuck.
#include "host/camera/lists.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using host::Lists;
using std::chrono::milliseconds;

class ListsTest : public testing::Test {
  protected:
    std::optional<std::uint64_t> ask(host::Time now) {
        return lists_.ask(
            [this](const host::PicturesAnswer& answer) {
                const auto* problem = std::get_if<host::Problem>(&answer);
                answers_.emplace_back(problem == nullptr
                                          ? std::to_string(std::get<0>(answer).size())
                                          : std::string(host::word(problem->code)) + ": " +
                                                problem->text);
            },
            now);
    }

    Lists lists_;
    std::vector<std::string> answers_;
};

TEST_F(ListsTest, TheDisksAnswerIsPassedOnOnce) {
    const auto number = ask(milliseconds(0));
    ASSERT_TRUE(number);
    lists_.answer({*number, std::vector<host::Picture>(2)});
    lists_.strike(milliseconds(5000));
    EXPECT_EQ(answers_, (std::vector<std::string>{"2"}));
    EXPECT_EQ(lists_.wake_at(), host::Time::max());
}

TEST_F(ListsTest, AFolderThatIsNotOpenIsAProblemAndNoEmptyList) {
    const auto number = ask(milliseconds(0));
    ASSERT_TRUE(number);
    lists_.answer({*number, std::nullopt});
    EXPECT_EQ(answers_, (std::vector<std::string>{"folder-gone: The folder is not open."}));
}

TEST_F(ListsTest, AStuckDiskIsAProblemWithinASecond) {
    const auto number = ask(milliseconds(5000));
    ask(milliseconds(5001));
    EXPECT_EQ(lists_.wake_at(), milliseconds(5900)) << "what remains is for the way to the client";
    lists_.strike(milliseconds(5899));
    EXPECT_TRUE(answers_.empty());
    lists_.strike(milliseconds(5900));
    EXPECT_EQ(answers_,
              (std::vector<std::string>{"folder-gone: The disk of the folder does not answer."}));
    EXPECT_EQ(lists_.wake_at(), milliseconds(5901)) << "that of the second one";
    lists_.answer({*number, {}});
    EXPECT_EQ(answers_.size(), 1u) << "the disk's answer came too late";
}

// Each waits in the disk's queue until the disk is there again.
TEST_F(ListsTest, SixtyFourAtMostWaitForTheDisk) {
    std::optional<std::uint64_t> first = ask(milliseconds(0));
    for (int number = 1; number < 64; ++number) {
        EXPECT_TRUE(ask(milliseconds(0)));
    }
    lists_.strike(milliseconds(1000));
    EXPECT_EQ(answers_.size(), 64u);
    EXPECT_FALSE(ask(milliseconds(1000)));
    EXPECT_EQ(answers_.back(), "busy: Too many lists are waiting for the disk.");
    lists_.answer({*first, {}});
    EXPECT_TRUE(ask(milliseconds(1000)));
}

}  // namespace
