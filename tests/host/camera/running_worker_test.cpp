// What comes out of a worker's two outputs.
#include "host/camera/running_worker.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/host/interruptions.h"
#include "tests/host/open_descriptors.h"
#include "tests/temporary_folder.h"

namespace host {
namespace {

constexpr int patience = 60'000;  // in milliseconds; only a failing test waits for it

std::unique_ptr<RunningWorker> run(const std::string& program,
                                   const std::shared_ptr<Inbox>& inbox) {
    CameraOptions options;
    options.worker = program;
    std::string why;
    auto worker = RunningWorker::start(options, {"run", "", -1}, inbox, why);
    EXPECT_NE(worker, nullptr) << why;
    return worker;
}

std::unique_ptr<RunningWorker> run_script(
    const std::string& text, const std::shared_ptr<Inbox>& inbox = std::make_shared<Inbox>()) {
    // The shell reads its script, and then what is said to it, from its input.
    auto worker = run("/bin/sh", inbox);
    worker->started();
    EXPECT_TRUE(worker->say(text));
    return worker;
}

// Until there is something to be read from the output, or from standard error.
void await(const RunningWorker& worker, bool error) {
    std::vector<pollfd> sources;
    worker.add_to(sources);
    ASSERT_EQ(sources.size(), 2u);
    ASSERT_EQ(poll(&sources[error ? 1 : 0], 1, patience), 1);
}

// The worker writes both while standard error is being listened to.
TEST(RunningWorkerTest, WhatItSaidOnStandardErrorComesBeforeTheLineThatFollowedIt) {
    const auto worker = run_script("echo begun >&2");
    await(*worker, true);
    std::vector<std::string> heard;
    Ear ear;
    ear.line = [&](std::string_view line) {
        heard.emplace_back(line);
    };
    ear.too_long = [] {
    };
    ear.error = [&](std::string_view line) {
        heard.emplace_back(line);
        if (line == "begun") {
            EXPECT_TRUE(worker->say("echo announcement >&2; echo ready"));
            await(*worker, false);
        }
    };
    while (heard.size() < 3) {
        worker->read(Time{}, ear);
    }
    EXPECT_EQ(heard, (std::vector<std::string>{"begun", "announcement", "ready"}));
}

// The status, once the process has ended.
int end_told_to(Inbox& inbox) {
    for (;;) {
        pollfd source{inbox.descriptor(), POLLIN, 0};
        if (poll(&source, 1, patience) != 1) {
            ADD_FAILURE() << "no end was told";
            return 0;
        }
        for (const Message& message : inbox.take()) {
            if (const auto* ended = std::get_if<ChildEnded>(&message)) {
                return ended->status;
            }
        }
    }
}

TEST(RunningWorkerTest, ItsEndIsToldWithItsStatus) {
    for (const auto& [text, status] :
         {std::pair("exit 3", 3), std::pair("kill -9 $$", 128 + SIGKILL)}) {
        const auto inbox = std::make_shared<Inbox>();
        const auto worker = run_script(text, inbox);
        EXPECT_EQ(end_told_to(*inbox), status) << text;
    }
}

TEST(RunningWorkerTest, AStatusThatTheSystemDidNotKeepIsMinusOne) {
    const auto before = signal(SIGCHLD, SIG_IGN);
    const auto inbox = std::make_shared<Inbox>();
    const auto worker = run_script("exit 3", inbox);
    EXPECT_EQ(end_told_to(*inbox), -1);
    signal(SIGCHLD, before);
}

// Most of them are given up before their process runs.
TEST(RunningWorkerTest, OneThatIsGivenUpAtOnceDoesNotStay) {
    const TemporaryFolder folder;
    const std::string program = folder.path() / "deaf";
    std::ofstream(program) << "#!/bin/sh\nexec sleep 600\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    for (int round = 0; round < 10; ++round) {
        const auto inbox = std::make_shared<Inbox>();
        run(program, inbox).reset();
        EXPECT_EQ(end_told_to(*inbox), 128 + SIGKILL);
    }
}

// Signals of the host's own find the thread that waits for the process.
TEST(RunningWorkerTest, ItsEndIsWaitedForThroughInterruptions) {
    const Interruptions interruptions;
    const auto inbox = std::make_shared<Inbox>();
    auto worker = run_script("", inbox);
    Interruptions::send();
    worker.reset();
    EXPECT_EQ(end_told_to(*inbox), 128 + SIGKILL);
}

// What a worker says, and what it was too long for.
struct Heard {
    std::vector<std::string> lines;
    std::vector<std::string> errors;
    int too_long = 0;
    const Ear ear{[this](std::string_view line) { lines.emplace_back(line); },
                  [this] { ++too_long; },
                  [this](std::string_view line) {
                      errors.emplace_back(line);
                  }};
};

// Waits for whatever the worker's pipes have next. False when nothing comes.
bool go_on(RunningWorker& worker, const Heard& heard) {
    std::vector<pollfd> sources;
    worker.add_to(sources);
    if (poll(sources.data(), static_cast<nfds_t>(sources.size()), patience) <= 0) {
        ADD_FAILURE() << "nothing came of the worker's pipes";
        return false;
    }
    worker.write_on();
    worker.read(Time{}, heard.ear);
    return true;
}

// It stands still once its own output is full: what it does not take waits here, to an end.
TEST(RunningWorkerTest, WhatItDoesNotReadIsKeptForItUpToALimit) {
    const auto worker = run_script("echo begun; exec cat");
    await(*worker, false);
    const std::string most(65'535, 'x');  // and its line feed
    EXPECT_FALSE(worker->say(most + "x"));
    EXPECT_TRUE(worker->say(most));
    std::vector<std::string> said{"begun", most};
    while (worker->say(std::to_string(said.size()) + std::string(1000, 'y'))) {
        said.push_back(std::to_string(said.size()) + std::string(1000, 'y'));
        ASSERT_LT(said.size(), 1000u);
    }
    Heard heard;
    while (heard.lines.size() < said.size() && go_on(*worker, heard)) {}
    EXPECT_EQ(heard.lines, said);
    EXPECT_TRUE(worker->say("more")) << "there is room again";
}

// It reads only once its pipe is full, or there might be nothing left to wait for.
TEST(RunningWorkerTest, OneThatOnlyReadsGetsItAll) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "gate";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const auto inbox = std::make_shared<Inbox>();
    const auto worker = run_script(
        "echo begun; read -r gate <'" + path + "'; exec head -c 131072 >/dev/null", inbox);
    await(*worker, false);
    EXPECT_TRUE(worker->say(std::string(65'535, 'x')));
    EXPECT_TRUE(worker->say(std::string(65'535, 'y')));
    const Descriptor gate(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::write(gate.number(), "\n", 1), 1);
    Heard heard;
    std::vector<pollfd> sources;
    do {
        sources.clear();
        worker->add_to(sources);
    } while (!sources.empty() && go_on(*worker, heard));
    EXPECT_EQ(end_told_to(*inbox), 0);
}

TEST(RunningWorkerTest, ALineAsLongAsTheLimitIsHeardAndNoLongerOne) {
    const auto worker = run_script(
        "for length in 65536 65537; do head -c $length /dev/zero; echo; head -c $length /dev/zero "
        ">&2; echo >&2; done; echo end; echo end >&2");
    Heard heard;
    while ((heard.lines.size() < 2 || heard.errors.size() < 2) && go_on(*worker, heard)) {}
    const std::vector<std::string> expected{std::string(65'536, '\0'), "end"};
    EXPECT_EQ(heard.lines, expected);
    EXPECT_EQ(heard.errors, expected);
    EXPECT_EQ(heard.too_long, 1) << "nothing is made of one on standard error";
}

TEST(RunningWorkerTest, NothingIsReadBeforeItsStartIsKnownNorWaitedForAfterItsEnd) {
    const auto inbox = std::make_shared<Inbox>();
    const auto worker = run("/bin/sh", inbox);
    EXPECT_TRUE(worker->say("printf x; exit"));
    EXPECT_EQ(end_told_to(*inbox), 0);
    Heard heard;
    std::vector<pollfd> sources;
    worker->add_to(sources);
    EXPECT_TRUE(sources.empty());
    EXPECT_FALSE(worker->read(Time{}, heard.ear));
    worker->started();
    EXPECT_TRUE(worker->read(Time{}, heard.ear));
    worker->add_to(sources);
    EXPECT_EQ(sources.size(), 1u)
        << "its standard error has ended, and the output has more: its end";
    EXPECT_FALSE(worker->read(Time{}, heard.ear));
    sources.clear();
    worker->add_to(sources);
    EXPECT_TRUE(sources.empty());
}

TEST(RunningWorkerTest, IsToldToQuitAndThenItsInputEnds) {
    const auto inbox = std::make_shared<Inbox>();
    const auto worker = run_script("echo begun; exec cat", inbox);
    await(*worker, false);
    EXPECT_EQ(worker->wake_at(), Time::max());
    EXPECT_FALSE(worker->climb(Time{}));
    worker->end(std::chrono::seconds(5), std::chrono::seconds(1));
    EXPECT_TRUE(worker->climb(std::chrono::seconds(1)));
    EXPECT_EQ(worker->wake_at(), std::chrono::seconds(6));
    EXPECT_FALSE(worker->climb(std::chrono::seconds(6)));
    EXPECT_EQ(worker->ended_by(), WorkerEnd::input);
    for (int line = 0; line < 3; ++line) {
        EXPECT_TRUE(worker->say(std::string(40'000, 'x'))) << "that nobody reads it is seen anyway";
    }
    EXPECT_EQ(end_told_to(*inbox), 0);
    Heard heard;
    while (worker->read(Time{}, heard.ear)) {}
    EXPECT_EQ(heard.lines, (std::vector<std::string>{"begun", "QUIT"}));
}

// The step has come to nothing, so that the next one is not waited for.
TEST(RunningWorkerTest, IsNotToldToQuitWhenItReadsNoMore) {
    const auto before = signal(SIGPIPE, SIG_IGN);
    const auto inbox = std::make_shared<Inbox>();
    const auto worker = run_script("exit", inbox);
    EXPECT_EQ(end_told_to(*inbox), 0);
    EXPECT_TRUE(worker->say("PRIME"));
    worker->end(std::chrono::seconds(5), Time{});
    EXPECT_FALSE(worker->climb(Time{}));
    EXPECT_EQ(worker->ended_by(), WorkerEnd::input);
    EXPECT_EQ(worker->wake_at(), std::chrono::seconds(5));
    signal(SIGPIPE, before);
}

TEST(RunningWorkerTest, AFloodIsSaidOnceAndNothingIsMadeOfWhatFollows) {
    const auto worker = run_script("yes | head -n 49998; echo >&2");
    Heard heard;
    while ((heard.errors.empty() || heard.lines.size() < 49'998) && go_on(*worker, heard)) {}
    EXPECT_EQ(worker->flood(), nullptr);
    EXPECT_TRUE(worker->say("echo one more"));
    while (heard.lines.size() < 49'999 && go_on(*worker, heard)) {}
    EXPECT_STREQ(worker->flood(), "50,000 lines within 1 s");
    EXPECT_EQ(worker->flood(), nullptr) << "it has been said";
    EXPECT_TRUE(worker->say("echo and one more"));
    await(*worker, false);
    worker->read(Time{}, heard.ear);
    EXPECT_EQ(heard.lines.size(), 49'999u);
}

// The thread that was to wait for it holds the inbox for as long as it may say something.
TEST(RunningWorkerTest, OneThatCannotBeStartedIsSaidAndNothingElse) {
    const auto inbox = std::make_shared<Inbox>();
    auto worker = run("/no/such/worker", inbox);
    pollfd source{inbox->descriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&source, 1, patience), 1);
    worker.reset();
    while (inbox.use_count() > 1) {
        std::this_thread::yield();
    }
    const std::vector<Message> told = inbox->take();
    ASSERT_EQ(told.size(), 1u);
    const auto* news = std::get_if<brain::News>(&told.front());
    ASSERT_NE(news, nullptr);
    EXPECT_TRUE(std::holds_alternative<brain::WorkerNotStarted>(*news));
}

// Whatever numbers are free here when it is started.
TEST(RunningWorkerTest, TheLockOfItsRunIsItsThirdDescriptor) {
    const TemporaryFolder folder;
    const std::string lock = folder.path() / "lock";
    const Descriptor held(open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    CameraOptions options;
    options.worker = "/bin/sh";
    for (const int descriptor : {held.number(), STDIN_FILENO, -1}) {
        for (unsigned closed = 0; closed < 8; ++closed) {
            const auto inbox = std::make_shared<Inbox>();
            int status = 0;
            {
                const StandardStreamsClosed streams(closed);
                if (descriptor == STDIN_FILENO) {
                    dup2(held.number(), STDIN_FILENO);
                }
                std::string why;
                const auto worker =
                    RunningWorker::start(options, {"run", "", descriptor}, inbox, why);
                worker->say("[ /dev/fd/3 -ef " + lock +
                            " ] && exit 3; [ ! -e /dev/fd/3 ] || exit 4; exit 0");
                status = end_told_to(*inbox);
            }
            EXPECT_EQ(status, descriptor < 0 ? 0 : 3) << descriptor << ", " << closed;
        }
    }
}

TEST(RunningWorkerTest, IsNotMadeWithoutDescriptors) {
    const auto inbox = std::make_shared<Inbox>();
    CameraOptions options;
    options.worker = "/bin/sh";
    for (int left = 0; left < 6; ++left) {
        std::string why;
        bool made = true;
        {
            const DescriptorsLeft few(left);
            made = RunningWorker::start(options, {"run", "", -1}, inbox, why) != nullptr;
        }
        EXPECT_FALSE(made) << left;
        EXPECT_EQ(why, "cannot make a pipe: Too many open files") << left;
    }
}

}  // namespace
}  // namespace host
