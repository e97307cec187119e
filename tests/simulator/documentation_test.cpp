// What docs/simulator.md promises: its scenes play, and it knows every command and every number.

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

#include "tests/simulator/stage.h"

namespace {

std::string page() {
    std::ifstream file(SIMULATOR_PAGE);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::string escaped = "\\|";  // as tables write a bar
    for (std::size_t at = text.find(escaped); at != std::string::npos; at = text.find(escaped)) {
        text.replace(at, escaped.size(), "|");
    }
    return text;
}

}  // namespace

TEST(Documentation, ItsScenesPlay) {
    const std::string text = page();
    const std::string begin = "```scene\n";
    int scenes = 0;
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        at += begin.size();
        Stage stage(text.substr(at, text.find("```", at) - at));
        EXPECT_TRUE(stage.init());
        ++scenes;
    }
    EXPECT_EQ(scenes, 10);
}

TEST(Documentation, KnowsEveryCommand) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    const std::string text = page();
    auto client = camera_sim::ControlClient::connect((stage.folder() / "control").string());
    ASSERT_TRUE(client);
    const auto help = client->ask("help");
    ASSERT_TRUE(help && help->ok);
    EXPECT_GT(help->lines.size(), 50U);
    for (const std::string& command : help->lines) {
        EXPECT_NE(text.find("| `" + command + "` |"), std::string::npos) << command;
    }
}

TEST(Documentation, KnowsEveryNumberOfItsOwn) {
    const std::string text = page();
    std::ifstream file(SIMULATOR_CODES);
    const std::string codes{std::istreambuf_iterator<char>(file), {}};
    int numbers = 0;
    for (const std::string prefix : {"= 0x51", "= 0x000251"}) {
        for (std::size_t at = codes.find(prefix); at != std::string::npos;
             at = codes.find(prefix, at + 1)) {
            const std::string digits = codes.substr(at + 4, prefix.size() - 2);
            const std::string number = "| 0x" + std::string(8 - digits.size(), '0') + digits + " |";
            EXPECT_NE(text.find(number), std::string::npos) << number;
            ++numbers;
        }
    }
    EXPECT_EQ(numbers, 14);
}
