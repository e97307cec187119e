// The terminal connected to the worker.
#include <signal.h>

#include "tests/tether/command_test.h"

namespace {

using InteractiveTest = CommandTest;

TEST_F(InteractiveTest, TheTerminalIsConnectedToTheWorker) {
    start_tether({"--interactive"});
    read_to("READY|OK");
    tether_->send("CONNECT");
    read_to("FILE_TYPE|");
    tether_->send("CAPTURE");
    read_to("DOWNLOADED|" + (folder_ / "shots/DSC00001.JPG").string());
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" > CAPTURE\n"));
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

TEST_F(InteractiveTest, TheEndOfTypingLetsTheWorkerFinish) {
    start_tether({"--interactive"});
    tether_->send_bytes("PRIME\nno line feed");
    tether_->close_input();
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" < PRIME_DONE|OK\n")) << output_;
    EXPECT_TRUE(printed(" < ERROR|Unknown command: no line feed\n")) << output_;
}

TEST_F(InteractiveTest, AnInterruptEndsTheTerminalsConnection) {
    start_tether({"--interactive"});
    read_to("READY|OK");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 0");
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

TEST_F(InteractiveTest, TheTerminalsConversationIsRecordedToo) {
    start_tether({"--interactive", "--record", folder_ / "record", "--redact"});
    tether_->send("CONNECT");
    tether_->send("set_download_dir|" + (folder_ / "own").string());
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    const std::string record = read("record");
    expect_in_order(record, {" > CONNECT\n", " > set_download_dir|<folder>\n", " > QUIT\n",
                             " # the worker ended in order\n"});
    EXPECT_EQ(record.find(folder_), std::string::npos) << record;
    EXPECT_EQ(record.find(" > QUIT\n"), record.rfind(" > QUIT\n")) << record;
}

TEST_F(InteractiveTest, TheRecordTellsWhatTheWorkerDidNotTake) {
    write("deaf", "#!/bin/sh\nexec <&-\necho 'STATUS|deaf'\nuntil [ -e " +
                      (folder_ / "heard").string() + " ]; do :; done\n");
    fs::permissions(folder_ / "deaf", fs::perms::owner_all);
    start_tether({"--interactive", "--worker", folder_ / "deaf", "--record", folder_ / "record"});
    read_to("STATUS|deaf");
    tether_->send("CONNECT");
    tether_->send("CAPTURE");
    read_to(" > CAPTURE");
    write("heard", "");
    EXPECT_EQ(status(), "status 0");
    expect_in_order(read("record"), {" > CONNECT\n", " # the worker did not take this line\n"});
}

TEST_F(InteractiveTest, NoQuitIsRecordedThatCannotBeSent) {
    write("staying",
          "#!/bin/sh\nwhile read line; do :; done\necho 'STATUS|end of input'\n"
          "while :; do :; done\n");
    fs::permissions(folder_ / "staying", fs::perms::owner_all);
    start_tether(
        {"--interactive", "--worker", folder_ / "staying", "--record", folder_ / "record"});
    tether_->close_input();
    read_to("STATUS|end of input");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 1");
    const std::string record = read("record");
    expect_in_order(record, {" # interrupted\n", " # the worker had to be ended with SIGTERM\n"});
    EXPECT_EQ(record.find("QUIT"), std::string::npos) << record;
}

TEST_F(InteractiveTest, ATypedLineThatIsNoCommandIsRefusedAloud) {
    start_tether({"--interactive", "--record", folder_ / "record"});
    read_to("READY|OK");
    tether_->send_bytes(std::string(100'000, 'x') + "\nPRI\rME\nPRIME\r\n");
    read_to("tether: the command has 4159 bytes, and the worker takes at most 4095");
    read_to("tether: the command has a carriage return in it, which the worker may drop");
    read_to(" < PRIME_DONE|OK");
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    EXPECT_FALSE(printed("Unknown command")) << output_;
    expect_in_order(read("record"), {" # the command has 4159 bytes", " # the command has a carr",
                                     " > PRIME\n", " < PRIME_DONE|OK\n"});
}

// Ctrl-C and Ctrl-D would be all that a user can do about it.
TEST_F(InteractiveTest, AProcessThatTheWorkerLeavesBehindHoldsNobodyUp) {
    const std::string parent =
        script("parent", "echo 'READY|OK'\nsleep 1000 &\necho $! >" + (folder_ / "left").string() +
                             "\nread line\nexit 0\n");
    start_tether({"--interactive", "--worker", parent});
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(kill(std::stoi(read("left")), SIGKILL), 0) << "it must have outlived tether";
}

}  // namespace
