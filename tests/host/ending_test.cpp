// The ladder that ends a worker, step by step.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/host/child.h"
#include "tests/host/interruptions.h"

namespace {

using host::Clock;
using host::describe;
using host::EndedBy;
using host::Ending;
using std::chrono::milliseconds;

// A step that is meant to work gets all the time it needs; one that is meant to fail gets little.
constexpr milliseconds soon{100};

TEST(Ending, QuitIsEnough) {
    const auto child =
        start_script("while read line; do [ \"$line\" = QUIT ] && exit 0; done; exit 1");
    child->send("PRIME");
    const Ending ending = child->end({patience, soon, soon});
    EXPECT_EQ(ending.by, EndedBy::quit);
    EXPECT_TRUE(ending.exit.clean());
}

TEST(Ending, ClosesTheInputWhenQuitIsNotHeard) {
    const auto child = start_script("cat > /dev/null; exit 5");
    const auto start = Clock::now();
    const Ending ending = child->end({soon, patience, soon});
    EXPECT_EQ(ending.by, EndedBy::closed_input);
    EXPECT_EQ(describe(ending.exit), "status 5");
    EXPECT_GE(ending.exit.at - start, soon);
}

TEST(Ending, SendsSigtermWhenTheEndOfInputIsNotHeard) {
    const auto child = start_script("echo ready; exec sleep 1000");
    EXPECT_EQ(next_text(*child), "ready");
    const auto start = Clock::now();
    const Ending ending = child->end({soon, soon, patience});
    EXPECT_EQ(ending.by, EndedBy::sigterm);
    EXPECT_EQ(describe(ending.exit), "signal 15");
    EXPECT_GE(ending.exit.at - start, 2 * soon);
}

TEST(Ending, KillsWhatHearsNothing) {
    const auto child = start_script("trap '' TERM; echo ready; while :; do sleep 0.01; done");
    EXPECT_EQ(next_text(*child), "ready");
    const auto start = Clock::now();
    const Ending ending = child->end({soon, soon, soon});
    EXPECT_EQ(ending.by, EndedBy::sigkill);
    EXPECT_EQ(describe(ending.exit), "signal 9");
    EXPECT_GE(ending.exit.at - start, 3 * soon);
}

// A host may ignore SIGCHLD, and then the system keeps no status.
TEST(Ending, AStatusThatNobodyGotToSeeIsNotTakenForSuccess) {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction before {};
    sigaction(SIGCHLD, &ignore, &before);
    const auto child = start_script("exit 3");
    const auto exit = child->await_exit(host::after(patience));
    sigaction(SIGCHLD, &before, nullptr);
    ASSERT_TRUE(exit);
    EXPECT_FALSE(exit->clean());
    EXPECT_EQ(describe(*exit), "a status that this process did not get to see");
}

// A worker that has started another one: both have the output.
TEST(Ending, ASignalToTheGroupReachesAllOfIt) {
    auto output = host::make_pipe();
    ASSERT_TRUE(output);
    std::string why;
    const auto process = host::spawn({"/bin/sh", {"-c", "sleep 600 & echo; wait"}, {}, {}},
                                     output->read_end, output->write_end, why);
    ASSERT_TRUE(process) << why;
    output->write_end.close();
    char begun = 0;
    ASSERT_EQ(read(output->read_end.number(), &begun, 1), 1);
    host::ExitWatch watch(*process);
    EXPECT_TRUE(watch.signal_group(SIGKILL));
    EXPECT_EQ(read(output->read_end.number(), &begun, 1), 0) << "nobody has it any more";
    const auto exit = watch.await(host::after(patience));
    ASSERT_TRUE(exit);
    EXPECT_EQ(describe(*exit), "signal 9");
    EXPECT_FALSE(watch.signal_group(SIGKILL));
}

std::optional<pid_t> sleeper() {
    const auto pipe = host::make_pipe();
    std::string why;
    const auto process =
        host::spawn({"/bin/sleep", {"600"}, {}, {}}, pipe->read_end, pipe->write_end, why);
    EXPECT_TRUE(process) << why;
    return process;
}

TEST(Ending, AProcessThatIsWatchedNoMoreIsKilled) {
    const auto process = sleeper();
    ASSERT_TRUE(process);
    { const host::ExitWatch watch(*process); }
    EXPECT_NE(kill(*process, 0), 0);
}

TEST(Ending, AnEndIsWaitedForThroughInterruptions) {
    const Interruptions interruptions;
    const auto process = sleeper();
    ASSERT_TRUE(process);
    host::ExitWatch watch(*process);
    Interruptions::send();
    EXPECT_TRUE(watch.signal(SIGKILL));
    const auto exit = watch.await(host::after(patience));
    ASSERT_TRUE(exit);
    EXPECT_EQ(describe(*exit), "signal 9");
    EXPECT_EQ(exit->status, 0) << "no signal and a status as well";
    EXPECT_TRUE(host::Exit{}.clean());
}

// The worker ends 3 s after it has taken the QUIT, and fires a shot before that.
TEST(Ending, TakesItsTime) {
    const host::EndTimes times;
    EXPECT_EQ(times.after_quit, std::chrono::seconds(6));
    EXPECT_EQ(times.after_closing_input, std::chrono::seconds(1));
    EXPECT_EQ(times.after_sigterm, std::chrono::seconds(1));
}

TEST(Ending, AStoppedWorkerIsKilled) {
    const auto child = start_script("exec cat");
    child->signal(SIGSTOP);
    // A SIGTERM that reaches it before it has stopped would still end it.
    siginfo_t stopped;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child->process()), &stopped, WSTOPPED), 0);
    EXPECT_EQ(child->end({soon, soon, soon}).by, EndedBy::sigkill);
}

TEST(Ending, TellsAWorkerThatHadEndedAlready) {
    const auto child = start_script("exit 2");
    ASSERT_TRUE(child->await_exit(host::after(patience)));
    const Ending ending = child->end();
    EXPECT_EQ(ending.by, EndedBy::itself);
    EXPECT_EQ(describe(ending.exit), "status 2");
    EXPECT_EQ(child->end().by, EndedBy::itself);
}

TEST(Ending, GoesOnWithTheInputClosedAlready) {
    const auto child = start_script("trap '' TERM; cat; echo ready; exec sleep 1000");
    child->close_input();
    EXPECT_EQ(next_text(*child), "ready");
    EXPECT_EQ(child->end({patience, soon, soon}).by, EndedBy::sigkill);
}

}  // namespace
