// SIGHUP, SIGINT and SIGTERM end the worker in order, the first one only.

#include <gtest/gtest.h>
#include <signal.h>
#include <string>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

std::string log_of(int signal) {
    return "LOG|[SONY] signal " + std::to_string(signal) +
           " — closing the camera session before exit";
}

// More than a pipe and the reader's buffer hold: once it is written, the reader has queued all that
// was sent before it.
const std::string empty_lines(80'000, '\n');

class Signal : public testing::TestWithParam<int> {};

TEST_P(Signal, EndsAnIdleWorker) {
    LiveWorker worker;
    worker.expect_opening();
    const auto start = host::Clock::now();
    worker.signal(GetParam());
    EXPECT_EQ(worker.next(), log_of(GetParam()));
    EXPECT_EQ(worker.next(), "(end of output)");
    const host::Exit exit = worker.exit();
    EXPECT_TRUE(exit.clean());
    EXPECT_LE(exit.at - start, prompt);
}

TEST_P(Signal, LetsACaptureAndWhatIsQueuedFinish) {
    LiveWorker worker;
    worker.bring_session_up();
    worker.send_bytes("CAPTURE\nPRIME\n" + empty_lines);
    EXPECT_TRUE(worker.await_call("SetDeviceProperty 0x0001 2"));
    worker.signal(GetParam());
    EXPECT_EQ(worker.next(), log_of(GetParam()));
    // While the first one waits for the capture, all others are swallowed.
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        worker.signal(signal);
    }
    EXPECT_EQ(worker.next(), "REMOTE_CAPTURED|OK");
    EXPECT_EQ(worker.next(), "PRIME_DONE|OK");
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
    EXPECT_TRUE(worker.await_call("SetDeviceProperty 0x0001 1"));
    EXPECT_TRUE(worker.await_call("Disconnect 1"));
}

TEST_P(Signal, IsHeardThoughTheHostStartsItsChildrenWithItIgnored) {
    LiveWorker worker({.shell = "trap '' HUP INT TERM; exec \"$@\""});
    worker.expect_opening();
    worker.signal(GetParam());
    EXPECT_EQ(worker.next(), log_of(GetParam()));
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

TEST_P(Signal, EndsAWorkerWhoseHostNoLongerReads) {
    LiveWorker worker;
    worker.expect_opening();
    worker.close_output();
    worker.expect_prompt_end([&] { worker.signal(GetParam()); });
}

TEST_P(Signal, CannotCutShortWhatTheSdkHoldsUp) {
    LiveWorker worker({"next EnumCameraObjects hangs"});
    worker.expect_opening();
    worker.send("CONNECT");
    EXPECT_TRUE(worker.await_call("EnumCameraObjects 3"));
    worker.signal(GetParam());
    EXPECT_EQ(worker.next(), "STATUS|Looking for a camera");
    EXPECT_EQ(worker.next(), log_of(GetParam()));
    worker.tell_camera("resume");
    EXPECT_EQ(worker.next(), "LOG|[SONY] camera \"Virtual Camera SIM-1\" over USB");
    EXPECT_TRUE(worker.exit().clean());
}

INSTANTIATE_TEST_SUITE_P(Number, Signal, testing::Values(SIGHUP, SIGINT, SIGTERM),
                         testing::PrintToStringParamName());

TEST(Signals, AStormOfThemIsOne) {
    LiveWorker worker;
    worker.bring_session_up();
    worker.send("CAPTURE");
    EXPECT_TRUE(worker.await_call("SetDeviceProperty 0x0001 2"));
    worker.signal(SIGTERM);
    EXPECT_EQ(worker.next(), log_of(SIGTERM));
    const int signals[] = {SIGHUP, SIGINT, SIGTERM};
    for (int sent = 0; sent < 1000; ++sent) {
        worker.signal(signals[sent % 3]);
    }
    EXPECT_EQ(worker.next(), "REMOTE_CAPTURED|OK");
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

TEST(Signals, OneDuringTheStartIsHandledWhenTheWorkerIsReady) {
    LiveWorker worker({"next Init late 100ms"});
    EXPECT_EQ(worker.next(), "CPP_WORKER|START sony-1.0");
    worker.signal(SIGTERM);
    EXPECT_TRUE(worker.await_line("READY|OK"));
    EXPECT_TRUE(worker.exit().clean());
}

}  // namespace
