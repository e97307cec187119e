// What docs/simulator.md promises: its scenes play, and it knows every command and every number.

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <string>

#include "tests/simulator/stage.h"

namespace {

std::string page() {
    std::ifstream file(SIMULATOR_PAGE);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    return std::regex_replace(text, std::regex("\\\\\\|"), "|");  // as tables escape it
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
    const std::regex own("0x(51[0-9A-F]{2}|000251[0-9A-F]{2})");
    int numbers = 0;
    for (std::sregex_iterator at(codes.begin(), codes.end(), own), end; at != end; ++at) {
        const std::string digits = (*at)[1];
        const std::string number = "| 0x" + std::string(8 - digits.size(), '0') + digits + " |";
        EXPECT_NE(text.find(number), std::string::npos) << number;
        ++numbers;
    }
    EXPECT_EQ(numbers, 14);
}
