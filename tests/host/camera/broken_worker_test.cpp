// Workers that die, hang, flood, talk nonsense or will not end: each is ended and replaced, and
// none is left behind.
#include <algorithm>
#include <ctime>
#include <set>
#include <thread>

#include "tests/host/camera/camera_test.h"
#include "tests/host/open_descriptors.h"
#include "tests/sanitized.h"

namespace {

using host::Code;
using host::ShotStatus;
using host::State;
using std::chrono::milliseconds;

// Again and again, of a program that can do nothing else. A sanitizer takes too long over each line
// for so many of them in a second; then it is the bytes.
const std::string too_much = sanitized ? std::string(30'000, 'x') : "[SONY] and so on";

class BrokenWorkerTest : public CameraTest {
  protected:
    // A worker that answers everything in order and has no camera; `before` and `after` are done
    // before its first line and once its input has ended.
    std::string obedient(const std::string& before, const std::string& after) {
        return script("obedient", before + R"(
echo $$ >> )" + (folder_ / "processes").string() +
                                      R"(
echo 'CPP_WORKER|START sony-1.0'
echo 'READY|OK'
while read -r line; do
    case $line in
        SET_DOWNLOAD_DIR*) echo "DOWNLOAD_DIR|${line#*|}" ;;
        SET_SAVE_DEST*) echo "SAVE_DEST|${line#*|}" ;;
        PRIME) echo 'PRIME_DONE|OK' ;;
        QUIT) [ -n "$deaf" ] || exit 0 ;;
    esac
done
)" + after + "\n");
    }

    // The first one writes it without end; the next is a worker.
    void expect_replaced_when_it_writes(const std::string& text) {
        times_.rung_when_hung = milliseconds(200);
        const std::string flooded = folder_ / "flooded";
        options_.worker = script("flooding", "[ -e " + flooded + " ] && exec " WORKER "\n: > " +
                                                 flooded + "\nexec yes " + text + "\n");
        connect();
        await_problem(Code::worker_floods);
    }
};

// A tenth of a processor is ten times what it takes, and less than what four others leave.
TEST_F(BrokenWorkerTest, OneWithNothingToDoCostsNothing) {
    times_.between_fences = milliseconds(20);
    options_.worker = obedient("", "");
    make().start();
    const auto begun = host::Clock::now();
    const std::clock_t used = std::clock();
    await("some fences", [](const Told& told) {
        return std::count_if(told.lines.begin(), told.lines.end(), [](const host::WireLine& line) {
                   return line.text == "PRIME_DONE|OK";
               }) > 10;
    });
    EXPECT_LT(std::chrono::duration<double>(std::clock() - used) / CLOCKS_PER_SEC,
              std::chrono::duration<double>(host::Clock::now() - begun) / 10);
}

TEST_F(BrokenWorkerTest, OneThatIsKilledIsReplaced) {
    connect();
    const pid_t process = worker_process();
    kill(process, SIGKILL);
    await_problem(Code::worker_gone);
    await("the session", [](const Told& told) {
        return told.states.back().state == State::ready && told.states.back().restarts == 1;
    });
    EXPECT_NE(worker_process(), process);
    EXPECT_EQ(camera_->capture().status, ShotStatus::complete);
}

// The file is on disk, and the worker dies before its report is read.
TEST_F(BrokenWorkerTest, AFileThatADyingWorkerLeavesIsBroughtIn) {
    connect();
    tell_camera("every file number 0");  // in place, and not reported
    tell_camera("shutter");
    tell_camera("wait");
    kill(worker_process(), SIGKILL);
    await_pictures(1);
    EXPECT_TRUE(told().pictures[0].recovered);
    EXPECT_EQ(read("shots/DSC00001.JPG"), jpeg("first picture"));
}

TEST_F(BrokenWorkerTest, OneThatHangsIsReplaced) {
    times_.to_answer = milliseconds(700);
    times_.between_fences = milliseconds(100);
    times_.rung_when_hung = milliseconds(200);
    connect();
    const pid_t process = worker_process();
    kill(process, SIGSTOP);
    await_problem(Code::worker_hangs);
    await("the session", [](const Told& told) {
        return told.states.back().state == State::ready && told.states.back().restarts == 1;
    });
    EXPECT_TRUE(is_gone(process));
}

TEST_F(BrokenWorkerTest, OneThatFloodsIsReplaced) {
    expect_replaced_when_it_writes("'LOG|" + too_much + "'");
    EXPECT_EQ(camera_->capture().status, ShotStatus::complete);
    EXPECT_LT(told().lines.size(), 200'000u) << "what comes behind a flood is not told";
}

TEST_F(BrokenWorkerTest, OneThatFloodsItsStandardErrorIsReplaced) {
    expect_replaced_when_it_writes("'" + too_much + "' >&2");
}

TEST_F(BrokenWorkerTest, ALineThatIsTooLongIsAProblemAndNoAllocation) {
    options_.worker = obedient("head -c 200000 /dev/zero | tr '\\0' x; echo", "");
    const auto problem = make().start();
    EXPECT_FALSE(problem) << problem->text;
    await_problem(Code::worker_floods);
    for (const host::WireLine& line : told().lines) {
        EXPECT_LT(line.text.size(), 65'537u);
    }
}

TEST_F(BrokenWorkerTest, OneThatIsMissingIsSaidAtOnce) {
    options_.worker = folder_ / "no-worker";
    make();
    const std::set<ino_t> pipes = open_pipes();
    const auto problem = camera_->start();
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->code, Code::worker_missing);
    EXPECT_NE(problem->text.find(folder_ / "no-worker"), std::string::npos) << problem->text;
    EXPECT_TRUE(problem->text.ends_with("No such file or directory.")) << problem->text;
    await_state(State::down);
    EXPECT_TRUE(std::ranges::includes(pipes, open_pipes())) << "a new pipe is left open";
}

// Few are enough for the folder, and more for the worker's pipes as well.
TEST_F(BrokenWorkerTest, OneThatHasNoDescriptorsLeftIsSaid) {
    std::vector<std::string> texts;
    for (int left = 0; texts.empty() || !texts.back().empty(); ++left) {
        make();
        std::optional<host::Problem> problem;
        {
            const DescriptorsLeft few(left);
            problem = camera_->start();
        }
        texts.push_back(problem ? problem->text : "");
        ASSERT_LT(left, 64);
    }
    EXPECT_GT(std::count(texts.begin(), texts.end(), "cannot make a pipe: Too many open files."),
              0);
}

TEST_F(BrokenWorkerTest, OneThatIsNoneIsGivenUpAndTriedOnceAMinute) {
    options_.worker = "/bin/true";
    make();
    const std::set<ino_t> pipes = open_pipes();
    const auto problem = camera_->start();
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->code, Code::worker_not_starting);
    EXPECT_EQ(problem->text,
              "The worker ended before it was ready (status 0). It happened too often: from now on "
              "it is tried once a minute.");
    await_state(State::down);
    EXPECT_TRUE(std::ranges::includes(pipes, open_pipes())) << "a new pipe is left open";
}

// The host is slow to hear of its first line: the last one and its end wait together.
TEST_F(BrokenWorkerTest, WhatItSaidLastIsInTheProblem) {
    times_.most_restarts = 0;
    const fs::path heard = folder_ / "heard";
    options_.worker = script("talking", "echo $$ >> " + (folder_ / "processes").string() +
                                            "\necho first >&2\nuntil [ -e " + heard.string() +
                                            " ]; do :; done\necho 'out of luck' >&2\nexit 7\n");
    options_.listener.line = [&, listener = options_.listener.line](const host::WireLine& line) {
        listener(line);
        if (line.text == "first") {
            write("heard", "");
            while (!is_gone(worker_process())) {
                std::this_thread::yield();
            }
        }
    };
    const auto problem = make().start();
    ASSERT_TRUE(problem);
    EXPECT_EQ(
        problem->text,
        "The worker ended before it was ready (status 7). It said: \"out of luck\". It happened "
        "too often: from now on it is tried once a minute.");
}

// What comes of a line is done before the next one is told, also of lines that are read at once.
TEST_F(BrokenWorkerTest, EverythingIsToldInItsOrder) {
    const fs::path written = folder_ / "written";
    options_.worker = script(
        "quick",
        "echo begun >&2\necho 'camera-sim: simulated SDK, no real camera is driven' >&2\n"
        "printf 'CPP_WORKER|START sony-1.0\\nREADY|OK\\nLOG|behind it\\n'\n: > " +
            written.string() + "\nwhile read -r line; do [ \"$line\" != QUIT ] || exit; done\n");
    std::vector<std::string> all;
    options_.listener.line = [&, listener = options_.listener.line](const host::WireLine& line) {
        const char signs[] = {'>', '<', '!'};
        all.push_back(signs[static_cast<int>(line.direction)] + line.text);
        listener(line);
        while (line.text == "begun" && !fs::exists(written)) {
            std::this_thread::yield();
        }
    };
    options_.listener.state = [&](const host::SessionState& state) {
        all.push_back(std::string(word(state.state)) + (state.simulated ? ", simulated" : ""));
    };
    make().ask(host::Start{}, [](const host::Answer&) {});
    await("the last line", [](const Told& told) {
        return !told.lines.empty() && told.lines.back().text == "LOG|behind it";
    });
    camera_.reset();
    const auto folder = std::find_if(all.begin(), all.end(), [](const std::string& one) {
        return one.starts_with(">SET_DOWNLOAD_DIR|");
    });
    ASSERT_NE(folder, all.end());
    *folder = ">SET_DOWNLOAD_DIR|";
    all.erase(all.begin(), std::next(std::find(all.begin(), all.end(), "!begun")));
    all.erase(std::next(std::find(all.begin(), all.end(), "<LOG|behind it")), all.end());
    EXPECT_EQ(all,
              (std::vector<std::string>{"!camera-sim: simulated SDK, no real camera is driven",
                                        "starting, simulated", "<CPP_WORKER|START sony-1.0",
                                        "<READY|OK", ">SET_DOWNLOAD_DIR|", ">SET_SAVE_DEST|disk",
                                        ">PRIME", "idle, simulated", "<LOG|behind it"}));
}

TEST_F(BrokenWorkerTest, WhatItSaysOnStandardErrorIsTold) {
    options_.worker = obedient("echo 'a warning' >&2", "");
    EXPECT_FALSE(make().start());
    await("the line", [](const Told& told) {
        for (const host::WireLine& line : told.lines) {
            if (line.direction == host::WireLine::Direction::error && line.text == "a warning") {
                return true;
            }
        }
        return false;
    });
    EXPECT_FALSE(told().states.back().simulated);
}

struct Stubborn {
    const char* before;
    const char* after;
    host::Ended ended;
};

class StubbornWorkerTest : public BrokenWorkerTest, public testing::WithParamInterface<Stubborn> {};

TEST_P(StubbornWorkerTest, IsEndedByTheFirstStepThatEndsIt) {
    times_.rung_in_order = std::chrono::seconds(2);
    options_.worker = obedient(GetParam().before, GetParam().after);
    EXPECT_FALSE(make().start());
    EXPECT_EQ(camera_->shutdown(host::Time{}), GetParam().ended);
    EXPECT_TRUE(is_gone(worker_process()));
}

INSTANTIATE_TEST_SUITE_P(
    Ladder, StubbornWorkerTest,
    testing::Values(Stubborn{"", "", {host::WorkerEnd::quit, 0}},
                    Stubborn{"deaf=1", "exit 3", {host::WorkerEnd::input, 3}},
                    Stubborn{"deaf=1", "exec sleep 600", {host::WorkerEnd::sigterm, 128 + SIGTERM}},
                    Stubborn{"deaf=1; trap '' TERM",
                             "exec sleep 600",
                             {host::WorkerEnd::sigkill, 128 + SIGKILL}}),
    [](const auto& test) { return std::string(host::word(test.param.ended.worker)); });

TEST_F(BrokenWorkerTest, OneThatReadsNothingHoldsUpNobody) {
    times_.to_be_ready = milliseconds(500);
    times_.rung_when_hung = milliseconds(200);
    options_.worker = script("deaf", "echo $$ >> " + (folder_ / "processes").string() +
                                         "\necho 'CPP_WORKER|START sony-1.0'\necho 'READY|OK'\n"
                                         "exec sleep 600\n");
    times_.to_answer = milliseconds(500);
    EXPECT_FALSE(make().start());
    await_problem(Code::worker_hangs);
    EXPECT_EQ(camera_->shutdown(host::Time{}).worker, host::WorkerEnd::sigterm);
    EXPECT_TRUE(is_gone(worker_process()));
}

// It has closed its outputs and its input and goes on.
TEST_F(BrokenWorkerTest, OneThatClosesItsStreamsIsEndedAllTheSame) {
    times_.to_answer = milliseconds(500);
    times_.rung_when_hung = milliseconds(200);
    options_.worker = script("closed", "echo $$ >> " + (folder_ / "processes").string() +
                                           "\necho 'CPP_WORKER|START sony-1.0'\necho 'READY|OK'\n"
                                           "exec sleep 600 <&- >&- 2>&-\n");
    EXPECT_FALSE(make().start());
    await_problem(Code::worker_hangs);
    camera_.reset();
    EXPECT_TRUE(is_gone(worker_process()));
}

// Its place is taken before its end is seen: with no time on any step, that of the one that hangs
// is always taken so.
TEST_F(BrokenWorkerTest, AFileOfOneThatWasGivenUpIsBroughtInOnceItHasEnded) {
    times_.to_answer = milliseconds(300);
    times_.rung_when_hung = times_.after_sigkill = {};
    write("picture", jpeg("of the one that hangs"));
    const std::string picture = folder_ / "picture";
    const std::string hung = folder_ / "hung";
    options_.worker = obedient("[ -e " + hung + " ] || { : > " + hung + R"(
echo 'CPP_WORKER|START sony-1.0'
echo 'READY|OK'
read -r line
cp )" + picture + R"( "${line#*|}/DSC00001.JPG"
exec sleep 600
})",
                               "");
    EXPECT_FALSE(make().start());
    await_problem(Code::worker_hangs);
    await_pictures(1);
    EXPECT_TRUE(told().pictures[0].recovered);
    EXPECT_EQ(read("shots/DSC00001.JPG"), jpeg("of the one that hangs"));
    EXPECT_EQ(camera_->shutdown(host::Time{}), (host::Ended{host::WorkerEnd::quit, 0}))
        << "the one in its place is none the worse for it";
}

// A process that it leaves behind holds its pipes open, and its lock.
TEST_F(BrokenWorkerTest, WhatAWorkerLeavesBehindHoldsNobodyUp) {
    options_.worker =
        script("parent", "echo $$ >> " + (folder_ / "processes").string() +
                             "\nsleep 600 3>&- & echo $! > " + (folder_ / "left").string() +
                             "\necho 'CPP_WORKER|START sony-1.0'\necho 'READY|OK'\n"
                             "read line\nexit 7\n");
    EXPECT_FALSE(make().start());
    await_problem(Code::worker_gone);
    camera_.reset();
    std::ifstream left(folder_ / "left");
    pid_t process = 0;
    left >> process;
    EXPECT_EQ(kill(process, SIGKILL), 0) << "it outlived the camera";
}

// A start is under way for as long as somebody opens the other end.
TEST_F(BrokenWorkerTest, TheLockOfItsFolderIsHeldByTheWorkerAlone) {
    options_.worker = obedient("[ -e /dev/fd/3 ] && : > " + (folder_ / "has-lock").string(), "");
    EXPECT_FALSE(make().start());
    EXPECT_TRUE(fs::exists(folder_ / "has-lock"));
}

}  // namespace
