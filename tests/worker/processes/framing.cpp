// Bytes in, commands out: what the worker makes of odd lines.

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "tests/worker/processes/commands_in.h"
#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

// All of the commands must be ones that the worker does not know.
void expect_commands(const std::string& bytes, const std::vector<std::string>& commands) {
    LiveWorker worker;
    worker.expect_opening();
    EXPECT_TRUE(worker.send_bytes(bytes));
    worker.close_input();
    for (const std::string& command : commands) {
        ASSERT_EQ(worker.next(), "ERROR|Unknown command: " + command);
    }
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

TEST(Framing, LongLinesArriveInPiecesOf4095Bytes) {
    const std::string x4095(4095, 'x');
    expect_commands("\nafter\n", {"after"});
    expect_commands("y\n", {"y"});
    expect_commands(std::string(4094, 'x') + "\nafter\n", {std::string(4094, 'x'), "after"});
    expect_commands(x4095 + "\nafter\n", {x4095, "after"});
    expect_commands(x4095 + "y\nafter\n", {x4095, "y", "after"});
    expect_commands(std::string(5000, 'x') + "\nafter\n", {x4095, std::string(905, 'x'), "after"});
}

TEST(Framing, ALineOfAMillionBytesArrivesWhole) {
    std::string line;
    for (int number = 0; line.size() < 1'000'000; ++number) {
        line += std::to_string(number) + " ";
    }
    line.resize(1'000'000);
    std::vector<std::string> commands;
    for (std::size_t start = 0; start < line.size(); start += 4095) {
        commands.push_back(line.substr(start, 4095));
    }
    ASSERT_EQ(commands.size(), 245U);
    expect_commands(line + "\n", commands);
}

TEST(Framing, TrailingLineEndsGoAndOthersStay) {
    expect_commands("abc\r\ndef\n\r\rghi\r\r\n\r\n\n\r\r\nj\rk\r\n",
                    {"abc", "def", "\r\rghi", "j\rk"});
}

TEST(Framing, ALineEndsAtAZeroByte) {
    const std::string bytes("ab\0cd\n\0ef\nxyz\r\r\0\n", 17);
    expect_commands(bytes + "after\n", {"ab", "xyz", "after"});
}

TEST(Framing, BytesFrom0x80PassUnchanged) {
    std::string high;
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        high += static_cast<char>(byte);
    }
    expect_commands(high + "\n \t\n|\n", {high, " \t", "|"});
}

TEST(Framing, TheLastLineNeedsNoLineFeed) {
    expect_commands("first\nlast", {"first", "last"});
    expect_commands("last\r", {"last"});
    expect_commands(std::string(4095, 'x'), {std::string(4095, 'x')});
    expect_commands("", {});
}

TEST(Framing, ALineMayArriveByteByByte) {
    LiveWorker worker;
    worker.expect_opening();
    const std::string bytes = "slow\r\nPRIME\n";
    for (const char byte : bytes) {
        EXPECT_TRUE(worker.send_bytes({&byte, 1}));
    }
    EXPECT_EQ(worker.next(), "ERROR|Unknown command: slow");
    EXPECT_EQ(worker.next(), "PRIME_DONE|OK");
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

// Around the reader's buffer once and twice, in one write and in two, cut where a line or a piece
// of one ends.
TEST(Framing, EveryLengthAroundTheBufferHasItsCommandsHoweverItIsCut) {
    const std::string endings[] = {"\n", "\r\n", "\r", "\n\r\n", std::string("\0\n", 2), ""};
    LiveWorker worker;
    worker.expect_opening();
    const auto expect_after_two_writes = [&worker](const std::string& bytes, std::size_t cut) {
        EXPECT_TRUE(worker.send_bytes(bytes.substr(0, cut)));
        EXPECT_TRUE(worker.send_bytes(bytes.substr(cut)));
        for (const std::string& command : commands_in(bytes)) {
            EXPECT_EQ(worker.next(), "ERROR|Unknown command: " + command)
                << bytes.size() << " bytes cut at " << cut;
        }
    };
    for (const std::size_t middle : {4095U, 8190U}) {
        for (std::size_t length = middle - 5; length <= middle + 5; ++length) {
            for (const std::string& ending : endings) {
                // Behind a line without an end comes its end, and always a line that is whole.
                const std::string bytes = std::string(length, 'x') + ending + "y\nafter\n";
                for (const std::size_t cut :
                     {std::size_t{0}, std::size_t{1}, length - 1, length, length + 1,
                      bytes.size() - 7, std::size_t{4094}, std::size_t{4095}, std::size_t{4096}}) {
                    expect_after_two_writes(bytes, cut);
                }
            }
        }
    }
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

TEST(Framing, AnyMixtureOfOddBytesIsReadAsTheRulesSay) {
    constexpr unsigned seed = 20240229;
    std::mt19937 random(seed);
    const std::string bytes_to_choose("a\0\r\n|%\xC3\xA4", 8);
    const std::size_t runs[] = {1, 2, 100, 4093, 4094, 4095, 4096};
    for (int round = 0; round < rounds(20, 300); ++round) {
        std::string bytes;
        while (bytes.size() < 50'000) {
            const char byte = bytes_to_choose[random() % bytes_to_choose.size()];
            bytes += std::string(byte == '\0' || random() % 4 != 0 ? 1 : runs[random() % 7], byte);
        }
        SCOPED_TRACE("round " + std::to_string(round));
        expect_commands(bytes, commands_in(bytes));
        if (HasFailure()) {
            return;
        }
    }
}

}  // namespace
