// Many lines at once: none is lost, none overtakes another.

#include <gtest/gtest.h>
#include <string>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

TEST(Bursts, AMillionLinesAtOnceAreAnsweredInOrder) {
    const int lines = sanitized ? 100'000 : 1'000'000;
    std::string bytes;
    for (int line = 1; line <= lines; ++line) {
        bytes += "line " + std::to_string(line) + "\n";
    }
    LiveWorker worker;
    worker.expect_opening();
    EXPECT_TRUE(worker.send_bytes(bytes));
    worker.close_input();
    for (int line = 1; line <= lines; ++line) {
        ASSERT_EQ(worker.next(), "ERROR|Unknown command: line " + std::to_string(line));
    }
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

// The loop hangs in the SDK while they come, so that all of them wait in the queue.
TEST(Bursts, AHundredThousandLinesWaitForABusyLoop) {
    constexpr int lines = 100'000;
    std::string bytes;
    for (int line = 1; line <= lines; ++line) {
        bytes += "line " + std::to_string(line) + "\n";
    }
    LiveWorker worker({"next SendCommand hangs"});
    worker.bring_session_up();
    worker.send("CAPTURE");
    EXPECT_TRUE(worker.await_call("SendCommand 0 1"));
    // More than the pipe and the reader's buffer hold.
    EXPECT_TRUE(worker.send_bytes(bytes));
    worker.tell_camera("resume");
    EXPECT_EQ(worker.next(), "REMOTE_CAPTURED|OK");
    for (int line = 1; line <= lines; ++line) {
        ASSERT_EQ(worker.next(), "ERROR|Unknown command: line " + std::to_string(line));
    }
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

}  // namespace
