// The one queue of commands. Its end is for good, so what is about the end runs in a process of its
// own.

#include "threads/command_queue.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/worker/unit/queued_commands.h"

namespace {

using Lines = std::vector<std::string>;

[[noreturn]] void end_process(bool as_expected) {
    std::_Exit(as_expected ? 0 : 1);
}

// A queue that loses its end leaves a process that waits for ever: an alarm ends it.
class EndOfCommands : public testing::Test {
  protected:
    EndOfCommands() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        alarm(60);
    }
    ~EndOfCommands() override {
        alarm(0);
    }
};

TEST(CommandQueue, IsFirstInFirstOut) {
    main_thread.assume();
    for (const char* const line : {"CONNECT", "", "connect|disk", "CONNECT", "a\nb"}) {
        EXPECT_TRUE(post_command(line));
    }
    EXPECT_EQ(queued_commands(), Lines({"CONNECT", "", "connect|disk", "CONNECT", "a\nb"}));
}

TEST(CommandQueue, LosesAndReordersNothingOfAnyThread) {
    main_thread.assume();
    constexpr int lines_each = 2000;
    const std::string names[] = {"reader", "signal", "sdk-1", "sdk-2"};
    std::vector<std::thread> threads;
    for (const std::string& name : names) {
        threads.emplace_back([&name] {
            for (int number = 0; number < lines_each; ++number) {
                post_command(name + "|" + std::to_string(number));
            }
        });
    }
    std::map<std::string, int> taken;
    bool in_order = true;
    for (std::size_t line = 0; line < std::size(names) * lines_each; ++line) {
        const std::string next = next_command().value_or("");
        const std::string name = next.substr(0, next.find('|'));
        in_order &= next == name + "|" + std::to_string(taken[name]);
        ++taken[name];
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(in_order);
    EXPECT_EQ(queued_commands(), Lines());
}

TEST_F(EndOfCommands, ComesAfterWhatIsQueued) {
    EXPECT_EXIT(
        {
            main_thread.assume();
            post_command("CONNECT");
            end_input();
            post_command("__CARD_CHECK");
            const bool as_expected =
                next_command() == "CONNECT" && next_command() == "__CARD_CHECK" &&
                next_command() == std::nullopt && next_command() == std::nullopt;
            end_process(as_expected);
        },
        testing::ExitedWithCode(0), "");
}

// The end comes just before the main thread falls asleep, or just after.
TEST_F(EndOfCommands, WakesAWaitingMainThread) {
    for (int round = 0; round < 20; ++round) {
        EXPECT_EXIT(
            {
                main_thread.assume();
                std::thread reader(end_input);
                const bool as_expected = next_command() == std::nullopt;
                reader.join();
                end_process(as_expected);
            },
            testing::ExitedWithCode(0), "");
    }
}

// A callback may post after standard input has ended, for as long as the loop still runs.
TEST_F(EndOfCommands, StillTakesWhatOtherThreadsPost) {
    EXPECT_EXIT(
        {
            main_thread.assume();
            end_input();
            const bool ended = next_command() == std::nullopt;
            const bool taken = post_command("__APPLY_SETTINGS");
            end_process(ended && taken && next_command() == "__APPLY_SETTINGS");
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(EndOfCommands, ClosedCommandsAreDropped) {
    EXPECT_EXIT(
        {
            main_thread.assume();
            post_command("CAPTURE");
            close_commands();
            const bool taken = post_command("CAPTURE");
            end_input();
            end_process(!taken && next_command() == std::nullopt);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
