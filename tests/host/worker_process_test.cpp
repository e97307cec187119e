// Starting a worker, talking to it and seeing it end.
#include "host/process/worker_process.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <sstream>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/host/child.h"
#include "tests/host/open_descriptors.h"

extern char** environ;

namespace {

using host::after;
using host::Clock;
using host::WorkerProcess;

TEST(WorkerProcess, LinesGoInAndComeOut) {
    const auto child = start_script("exec cat");
    EXPECT_TRUE(child->send("CONNECT|card"));
    EXPECT_TRUE(child->send_bytes("two\nlines\npart"));
    EXPECT_EQ(next_text(*child), "CONNECT|card");
    EXPECT_EQ(next_text(*child), "two");
    EXPECT_EQ(next_text(*child), "lines");
    EXPECT_FALSE(child->next_line(Clock::now()));
    EXPECT_FALSE(child->output_ended());
    child->close_input();
    EXPECT_EQ(next_text(*child), "part (unfinished)");
    EXPECT_EQ(next_text(*child), "(end of output)");
    EXPECT_TRUE(child->await_exit(after(patience))->clean());
}

TEST(WorkerProcess, EmptyLinesAndBytesOfAnyValueAreKept) {
    const auto child = start_script("exec cat");
    EXPECT_TRUE(child->send(""));
    EXPECT_TRUE(child->send_bytes(std::string("a\0\xFF\r\n", 5)));
    EXPECT_EQ(next_text(*child), "");
    EXPECT_EQ(next_text(*child), std::string("a\0\xFF\r", 4));
}

TEST(WorkerProcess, ArgumentsAndEnvironmentArrive) {
    setenv("HOST_TEST_INHERITED", "from the host", 1);
    setenv("HOST_TEST_REPLACED", "old", 1);
    const auto child =
        start({"/bin/sh",
               {"-c", "echo \"$1\"; echo \"$HOST_TEST_INHERITED\"; echo \"$HOST_TEST_REPLACED\"",
                "sh", "a \"b\" |c"},
               {{"HOST_TEST_REPLACED", "new=value"}},
               {}});
    EXPECT_EQ(next_text(*child), "a \"b\" |c");
    EXPECT_EQ(next_text(*child), "from the host");
    EXPECT_EQ(next_text(*child), "new=value");
}

// The variables of a worker that prints them all.
std::multiset<std::string> environment_of(const host::SpawnRequest& request) {
    const auto child = start(request);
    std::multiset<std::string> variables;
    while (const auto line = child->next_line(after(patience))) {
        variables.insert(line->text);
    }
    return variables;
}

TEST(WorkerProcess, EachVariableIsThereOnce) {
    setenv("HOST_TEST_INHERITED", "from=the host", 1);
    setenv("HOST_TEST_REPLACED", "old=one", 1);
    const auto variables = environment_of(
        {"/usr/bin/env", {}, {{"HOST_TEST_REPLACED", "new=value"}, {"HOST_TEST_NEW", ""}}, {}});
    for (const char* variable :
         {"HOST_TEST_INHERITED=from=the host", "HOST_TEST_REPLACED=new=value", "HOST_TEST_NEW="}) {
        EXPECT_EQ(variables.count(variable), 1u) << variable;
    }
    EXPECT_EQ(variables.count("HOST_TEST_REPLACED=old=one"), 0u);
}

TEST(WorkerProcess, StartsThoughTheHostHasNoEnvironment) {
    char** const before = environ;
    char* none = nullptr;
    environ = &none;
    const auto variables = environment_of({"/usr/bin/env", {}, {}, {}});
    environ = before;
    EXPECT_TRUE(variables.empty());
}

TEST(WorkerProcess, StandardErrorGoesToTheFile) {
    const std::string file =
        std::filesystem::temp_directory_path() / ("host-test-stderr-" + std::to_string(getpid()));
    const host::SpawnRequest request{"/bin/sh", {"-c", "echo complaint >&2"}, {}, file};
    ASSERT_TRUE(start(request)->await_exit(after(patience)));
    EXPECT_NE(std::filesystem::status(file).permissions() & std::filesystem::perms::owner_write,
              std::filesystem::perms::none)
        << "it is the user's, who may want to empty it";
    const auto child = start(request);
    ASSERT_TRUE(child->await_exit(after(patience)));
    std::stringstream content;
    content << std::ifstream(file).rdbuf();
    EXPECT_EQ(content.str(), "complaint\ncomplaint\n");
    EXPECT_EQ(next_text(*child), "(end of output)");
    std::filesystem::remove(file);
}

TEST(WorkerProcess, SaysWhyItCannotStart) {
    std::string error;
    EXPECT_EQ(WorkerProcess::start({"/no/such/worker", {}, {}, {}}, error), nullptr);
    EXPECT_EQ(error, "cannot start /no/such/worker: No such file or directory");
}

TEST(WorkerProcess, SaysThatItHasNoDescriptorsLeft) {
    for (int left = 0; left < 6; ++left) {
        std::string error;
        bool started = true;
        {
            const DescriptorsLeft few(left);
            started = WorkerProcess::start({"/bin/cat", {}, {}, {}}, error) != nullptr;
        }
        EXPECT_FALSE(started) << left;
        EXPECT_EQ(error, "cannot make a pipe: Too many open files") << left;
    }
}

TEST(WorkerProcess, ExitStatusAndSignalAreToldApart) {
    const auto with_status = start_script("exit 7");
    EXPECT_EQ(describe(*with_status->await_exit(after(patience))), "status 7");
    const auto with_signal = start_script("kill -9 $$");
    EXPECT_EQ(describe(*with_signal->await_exit(after(patience))), "signal 9");
}

TEST(WorkerProcess, TimesOfLinesAndExitFollowTheirOrder) {
    const auto start = Clock::now();
    const auto child = start_script("read line; echo first; read line; echo second");
    EXPECT_FALSE(child->await_exit(Clock::now()));
    child->send("go");
    const auto first = child->next_line(after(patience));
    const auto between = Clock::now();
    child->send("go");
    const auto second = child->next_line(after(patience));
    const auto exit = child->await_exit(after(patience));
    ASSERT_TRUE(first && second && exit);
    EXPECT_LE(start, first->at);
    EXPECT_LE(first->at, between);
    EXPECT_LE(between, second->at);
    EXPECT_LE(between, exit->at);
    EXPECT_LE(exit->at, Clock::now());
}

TEST(WorkerProcess, OutputIsDrainedWhileNobodyAsks) {
    // Far more than a pipe holds: the child can only end when somebody reads.
    const auto child =
        start_script("i=0; while [ $i -lt 20000 ]; do echo line $i; i=$((i+1)); done");
    ASSERT_TRUE(child->await_exit(after(patience)));
    for (int number = 0; number < 20000; ++number) {
        ASSERT_EQ(next_text(*child), "line " + std::to_string(number));
    }
    EXPECT_EQ(next_text(*child), "(end of output)");
}

TEST(WorkerProcess, SendingToADeadWorkerFailsWithoutASignal) {
    const auto child = start_script("exit 0");
    ASSERT_TRUE(child->await_exit(after(patience)));
    EXPECT_FALSE(child->send("CAPTURE"));
    EXPECT_FALSE(child->send("CAPTURE"));
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
}

TEST(WorkerProcess, ClosingTheOutputLetsTheWorkerSeeABrokenPipe) {
    const auto child = start_script("trap '' PIPE; read line; echo lost 2>/dev/null || exit 3");
    child->close_output();
    EXPECT_TRUE(child->output_ended());
    child->send("go");
    EXPECT_EQ(describe(*child->await_exit(after(patience))), "status 3");
}

TEST(WorkerProcess, OutputEndsAtTheCloseEvenIfAGrandchildHoldsThePipe) {
    const auto child = start_script("sleep 1000 & echo $!");
    const pid_t grandchild = std::stoi(next_text(*child));
    ASSERT_TRUE(child->await_exit(after(patience)));
    EXPECT_FALSE(child->output_ended());
    child->close_output();
    EXPECT_TRUE(child->output_ended());
    kill(grandchild, SIGKILL);
}

TEST(WorkerProcess, AGrandchildThatHoldsThePipeHoldsNobodyUp) {
    auto child = start_script("sleep 1000 & echo $!");
    const pid_t grandchild = std::stoi(next_text(*child));
    child.reset();
    EXPECT_EQ(kill(grandchild, SIGKILL), 0) << "it outlived the host's interest";
}

TEST(WorkerProcess, ASingleByteIsReadToo) {
    const auto child = start_script("printf x");
    EXPECT_EQ(next_text(*child), "x (unfinished)");
}

TEST(WorkerProcess, SignalsReachTheWorkerThoughTheHostBlocksAndIgnoresThem) {
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const auto pipe_before = signal(SIGPIPE, SIG_IGN);
    const auto child =
        start_script("trap 'echo caught; exit 4' TERM; echo ready; while :; do sleep 0.01; done");
    const auto piped = start_script("kill -PIPE $$; exit 0");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    signal(SIGPIPE, pipe_before);

    EXPECT_EQ(next_text(*child), "ready");
    EXPECT_TRUE(child->signal(SIGTERM));
    EXPECT_EQ(next_text(*child), "caught");
    EXPECT_EQ(describe(*child->await_exit(after(patience))), "status 4");
    EXPECT_FALSE(child->signal(SIGTERM));
    EXPECT_EQ(describe(*piped->await_exit(after(patience))), "signal 13");
}

TEST(WorkerProcess, OneThatIsNoLongerWantedIsEndedInOrder) {
    auto pipe = host::make_pipe();
    ASSERT_TRUE(pipe);
    host::SpawnRequest request{"/bin/sh", {"-c", "read -r line; echo $line >&2"}, {}, {}};
    request.error_descriptor = pipe->write_end.number();
    std::string error;
    WorkerProcess::start(request, error);
    pipe->write_end.close();
    char said[6]{};
    EXPECT_EQ(read(pipe->read_end.number(), said, 5), 5) << error;
    EXPECT_STREQ(said, "QUIT\n");
}

TEST(WorkerProcess, TheWorkerHasAProcessGroupOfItsOwn) {
    const auto child = start_script("read line");
    EXPECT_EQ(getpgid(child->process()), child->process());
}

TEST(WorkerProcess, ParallelStartsLeakNoPipeIntoEachOther) {
    // A sibling that inherited the writing end of another's input would keep that one alive after
    // the close.
    constexpr int hosts = 8;
    constexpr int rounds = 10;
    std::vector<std::thread> threads;
    threads.reserve(hosts);
    std::atomic<int> ended{0};
    for (int number = 0; number < hosts; ++number) {
        threads.emplace_back([&ended] {
            for (int round = 0; round < rounds; ++round) {
                const auto child = start_script("exec cat");
                const auto sibling = start_script("exec cat");
                child->close_input();
                ended += child->await_exit(after(patience)) ? 1 : 0;
                ended += next_text(*child) == "(end of output)" ? 1 : 0;
                sibling->signal(SIGKILL);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(ended, 2 * hosts * rounds);
}

// The numbers of the open descriptors of a child that has answered and waits.
std::set<std::string> descriptors_of(WorkerProcess& child) {
    child.send("ready");
    EXPECT_EQ(next_text(child), "ready");
    std::set<std::string> numbers;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(child.process()) + "/fd")) {
        numbers.insert(entry.path().filename());
    }
    return numbers;
}

TEST(WorkerProcess, AWorkerInheritsNothingOfItsSiblings) {
    if (!std::filesystem::exists("/proc/self/fd")) {
        GTEST_SKIP() << "no /proc here to list the child's descriptors";
    }
    const auto first = start_script("exec cat");
    const auto second = start_script("exec cat");
    const auto open = descriptors_of(*first);
    EXPECT_EQ(open.count("0") + open.count("1") + open.count("2"), 3u);
    EXPECT_EQ(descriptors_of(*second), open);
}

TEST(WorkerProcess, StartsThoughTheHostHasNoStandardInput) {
    Child child;
    {
        const StandardStreamsClosed streams(1u << STDIN_FILENO);
        child = start_script("exec cat");
    }
    EXPECT_TRUE(child->send("still here"));
    EXPECT_EQ(next_text(*child), "still here");
}

}  // namespace
