// The ways out, their times and their statuses.

#include <gtest/gtest.h>
#include <memory>
#include <signal.h>
#include <vector>

#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

// QUIT, with standard input held open all the time.
void expect_quit_to_be_prompt(LiveWorker& worker) {
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

TEST(Exits, QuitIsPromptWhenIdle) {
    LiveWorker worker;
    worker.expect_opening();
    expect_quit_to_be_prompt(worker);
}

TEST(Exits, QuitIsPromptWithASessionUp) {
    LiveWorker worker;
    worker.bring_session_up();
    expect_quit_to_be_prompt(worker);
    EXPECT_TRUE(worker.await_call("Disconnect 1"));
    EXPECT_TRUE(worker.await_call("ReleaseDevice 1"));
    EXPECT_TRUE(worker.await_call("Release"));
}

TEST(Exits, QuitIsPromptWhileAConnectWaits) {
    LiveWorker worker({"answer never"});
    worker.send("CONNECT");
    EXPECT_TRUE(worker.await_line("STATUS|Opening camera session"));
    expect_quit_to_be_prompt(worker);
}

TEST(Exits, QuitIsPromptAfterTheCameraWentAway) {
    LiveWorker worker;
    worker.bring_session_up();
    worker.tell_camera("unplug");
    EXPECT_TRUE(worker.await_line("DISCONNECTED|"));
    expect_quit_to_be_prompt(worker);
}

TEST(Exits, WhatStandsBehindQuitIsDropped) {
    LiveWorker worker;
    worker.expect_opening();
    worker.expect_prompt_end([&] { worker.send_bytes("QUIT\nPRIME\nCONNECT\nfoo\n"); });
}

TEST(Exits, TheEndOfInputIsPrompt) {
    LiveWorker worker;
    worker.bring_session_up();
    worker.expect_prompt_end([&] { worker.close_input(); });
}

TEST(Exits, CommandsBeforeTheEndOfInputAreHandled) {
    LiveWorker worker;
    worker.expect_opening();
    worker.send_bytes("PRIME\nPRELOAD\nPUMP_IDLE");
    worker.close_input();
    EXPECT_EQ(worker.next(), "PRIME_DONE|OK");
    EXPECT_EQ(worker.next(), "PRELOADED|OK");
    EXPECT_EQ(worker.next(), "PUMP_IDLE_READY|OK");
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

TEST(Exits, AnSdkThatCannotBeStartedGivesStatus1) {
    LiveWorker worker({"next Init answers false"});
    EXPECT_EQ(worker.next(), "CPP_WORKER|START sony-1.0");
    EXPECT_EQ(worker.next().rfind("LOG|[SONY] USB transport adapters found: ", 0), 0U);
    EXPECT_EQ(worker.next(), "ERROR|Sony Camera Remote SDK failed to initialise");
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_EQ(describe(worker.exit()), "status 1");
}

// Three seconds are counted from the end of the loop, wherever the SDK hangs. The workers run at
// the same time.
TEST(Exits, ASdkThatHangsIsLeftAfterThreeSeconds) {
    constexpr std::size_t shutdowns = 20;
    const std::string hanging[] = {"Disconnect 1", "ReleaseDevice 1", "Release"};
    const auto call = [&hanging](std::size_t number) {
        return hanging[number % 3];
    };
    std::vector<std::unique_ptr<LiveWorker>> workers;
    for (std::size_t number = 0; number < shutdowns; ++number) {
        const std::string function = call(number).substr(0, call(number).find(' '));
        workers.push_back(std::make_unique<LiveWorker>(Plan{"next " + function + " hangs"}));
        workers.back()->bring_session_up();
    }
    std::vector<host::TimePoint> asked;
    for (const auto& worker : workers) {
        asked.push_back(host::Clock::now());
        worker->send("QUIT");
    }
    for (std::size_t number = 0; number < shutdowns; ++number) {
        SCOPED_TRACE(call(number));
        EXPECT_TRUE(workers[number]->await_call(call(number)));
        const host::Exit exit = workers[number]->exit();
        EXPECT_EQ(describe(exit), "status 0");
        EXPECT_GE(exit.at - asked[number], exit_deadline);
        EXPECT_LE(exit.at - asked[number], exit_deadline_passed);
        EXPECT_EQ(workers[number]->next(), "(end of output)");
    }
}

TEST(Exits, AThreadThatCannotBeMadeEndsTheWorkerAbnormally) {
    if (sanitized) {
        GTEST_SKIP() << "a sanitized program cannot live in little memory";
    }
    // Stacks that are larger than all the memory that the process may have.
    LiveWorker worker({.scene = {},
                       .arguments = {},
                       .shell = "ulimit -s 2000000; ulimit -v 1000000; exec \"$@\""});
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_EQ(worker.exit().signal, SIGABRT);
    EXPECT_NE(worker.take_complaints().find("std::system_error"), std::string::npos);
}

}  // namespace
