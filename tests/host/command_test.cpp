// What may be sent to the worker as one command.
#include "host/process/command.h"

#include <gtest/gtest.h>
#include <string>

#include "tests/host/child.h"

namespace {

using host::why_not_one_command;
using host::write_command;

const std::string longest(4095, 'x');

TEST(Command, IsAsLongAsTheWorkerReadsAndNoLonger) {
    EXPECT_EQ(why_not_one_command(""), "");
    EXPECT_EQ(why_not_one_command("SET_DOWNLOAD_DIR|/a b\t\xC3\xA4"), "");
    EXPECT_EQ(why_not_one_command(longest), "");
    EXPECT_EQ(why_not_one_command(longest + "x"),
              "the command has 4096 bytes, and the worker takes at most 4095");
}

TEST(Command, HoldsNoByteThatEndsOneForTheWorker) {
    EXPECT_EQ(why_not_one_command("CAPTURE\nQUIT"),
              "the command has a line feed in it, and the worker would take two");
    EXPECT_EQ(why_not_one_command("CAPTURE\r"),
              "the command has a carriage return in it, which the worker may drop");
    EXPECT_EQ(why_not_one_command(std::string("CONNECT|\0card", 13)),
              "the command has a zero byte in it, where the worker would end it");
}

TEST(Command, IsWrittenWithItsArgumentsEscaped) {
    std::string error;
    EXPECT_EQ(write_command("CAPTURE", {}, error), "CAPTURE");
    EXPECT_EQ(write_command("SET_DOWNLOAD_DIR", {"/a|b\n100%"}, error),
              "SET_DOWNLOAD_DIR|/a%7Cb%0A100%25");
    EXPECT_EQ(error, "");
}

TEST(Command, FitsWithItsArgumentsEscaped) {
    std::string error;
    const std::string name = "SET_DOWNLOAD_DIR|";
    const std::string folder((4095 - name.size()) / 3, '%');
    const std::string rest((4095 - name.size()) % 3, 'x');
    EXPECT_TRUE(write_command("SET_DOWNLOAD_DIR", {folder + rest}, error));
    EXPECT_FALSE(write_command("SET_DOWNLOAD_DIR", {folder + rest + "x"}, error));
    EXPECT_EQ(error, "the command has 4096 bytes, and the worker takes at most 4095");
    EXPECT_FALSE(write_command("SET_DOWNLOAD_DIR", {std::string("/a\0b", 4)}, error));
    EXPECT_EQ(error, "the command has a zero byte in it, where the worker would end it");
}

TEST(Command, OneThatIsRefusedIsNotSent) {
    const auto child = start_script("exec cat");
    for (const std::string& line :
         {longest + "x", std::string("A\nB"), std::string("A\r"), std::string("A\0B", 3)}) {
        std::string why;
        EXPECT_FALSE(child->send(line, why));
        EXPECT_EQ(why, why_not_one_command(line));
        EXPECT_FALSE(child->send(line));
    }
    EXPECT_TRUE(child->send(longest));
    EXPECT_EQ(next_text(*child), longest);
    std::string why = "of before";
    EXPECT_TRUE(child->send("PRIME", why));
    EXPECT_EQ(why, "");
    EXPECT_EQ(next_text(*child), "PRIME");
    child->close_input();
    EXPECT_FALSE(child->send("PRIME", why));
    EXPECT_EQ(why, "the worker did not take this line");
}

#if defined(WORKER)
TEST(Command, TheLongestReachesTheWorkerWhole) {
    const auto worker = start({WORKER, {}, {}, "/dev/null"});
    while (next_text(*worker) != "READY|OK") {
        ASSERT_FALSE(worker->output_ended());
    }
    EXPECT_TRUE(worker->send(longest));
    EXPECT_EQ(next_text(*worker), "ERROR|Unknown command: " + longest);
    EXPECT_TRUE(worker->send_bytes(longest + "y\n"));
    EXPECT_EQ(next_text(*worker), "ERROR|Unknown command: " + longest);
    EXPECT_EQ(next_text(*worker), "ERROR|Unknown command: y") << "what a longer one becomes";
}
#endif

}  // namespace
