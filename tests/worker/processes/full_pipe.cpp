// A host that does not read: the worker waits for it, and still leaves when it is told to.

#include <gtest/gtest.h>
#include <signal.h>
#include <string>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/output_pipe.h"
#include "tests/worker/processes/pace.h"

namespace {

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int time = 0; time < times; ++time) {
        result += text;
    }
    return result;
}

TEST(FullPipe, LinesWaitUntilTheHostReads) {
    constexpr int lines = 50'000;
    OutputPipe output;
    LiveWorker worker(output.plan());
    output.read_until("READY|OK\n");
    EXPECT_TRUE(worker.send_bytes(repeated("PRIME\n", lines)));
    output.await_full();
    worker.close_input();
    EXPECT_EQ(output.read_to_end(), repeated("PRIME_DONE|OK\n", lines));
    EXPECT_TRUE(worker.exit().clean());
}

TEST(FullPipe, AHostThatGivesUpReadingLetsTheWorkerGo) {
    OutputPipe output;
    LiveWorker worker(output.plan());
    output.read_until("READY|OK\n");
    EXPECT_TRUE(worker.send_bytes(repeated("PRIME\n", 50'000) + "QUIT\n"));
    output.await_full();
    output.close();
    EXPECT_TRUE(worker.exit().clean());
}

TEST(FullPipe, ASignalIsHandledOnceTheHostReads) {
    OutputPipe output;
    LiveWorker worker(output.plan());
    output.read_until("READY|OK\n");
    output.fill();
    worker.signal(SIGTERM);
    const std::string log = "LOG|[SONY] signal 15 — closing the camera session before exit\n";
    const std::string came = output.read_to_end();
    EXPECT_EQ(came.substr(came.find_first_not_of('.')), log);
    EXPECT_TRUE(worker.exit().clean());
}

// The SDK's thread waits in the middle of a line, and Release waits for the SDK's thread.
TEST(FullPipe, AnSdkThreadThatCannotWriteHoldsUpQuitForThreeSeconds) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer's _exit flushes stdout, and waits for that line too";
#endif
    OutputPipe output;
    LiveWorker worker(output.plan());
    worker.send_bytes("CONNECT\n");
    output.read_until("FILE_TYPE|jpeg\n");
    output.fill();
    worker.tell_camera("deliver \"a.JPG\" 0xFFFFFFFF");
    worker.expect_end([&] { worker.send("QUIT"); }, exit_deadline, exit_deadline_passed);
}

}  // namespace
