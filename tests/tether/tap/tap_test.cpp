// The tap between a host, which is the test, and a worker, which is a shell script.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <signal.h>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "host/process/exit_watch.h"
#include "host/process/pipe.h"
#include "host/process/spawn.h"
#include "tests/host/child.h"
#include "tests/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using host::Descriptor;

class TapTest : public testing::Test {
  protected:
    ~TapTest() override {
        input_.close();
        output_.close();
        tap_.reset();
    }

    // A tap of a worker of this script, whose "$0" is the test's folder.
    void start(const std::string& script, std::vector<std::string> options = {},
               const std::string& shell = "exec \"$@\"") {
        auto input = host::make_pipe();
        auto output = host::make_pipe();
        ASSERT_TRUE(input && output);
        start(std::move(input->read_end), std::move(output->write_end), script, std::move(options),
              shell);
        input_ = std::move(input->write_end);
        output_ = std::move(output->read_end);
    }

    void start(Descriptor input, Descriptor output, const std::string& script,
               std::vector<std::string> options, const std::string& shell) {
        host::SpawnRequest request;
        request.executable = "/bin/sh";
        request.arguments = {
            "-c", shell, "sh", TETHER_COMMAND, "tap", "--record", folder_ / "record"};
        request.arguments.insert(request.arguments.end(), options.begin(), options.end());
        request.arguments.insert(request.arguments.end(),
                                 {"/bin/sh", "-c", script, folder_.string()});
        request.error_file = folder_ / "stderr";
        std::string error;
        const auto process = host::spawn(request, input, output, error);
        ASSERT_TRUE(process) << error;
        tap_ = std::make_unique<host::ExitWatch>(*process);
    }

    void say(const std::string& bytes) {
        ASSERT_TRUE(host::write_all(input_, bytes, host::after(patience)));
    }

    // So many bytes, or those that came before the end.
    std::string hear(std::size_t count) {
        std::string bytes;
        char byte = 0;
        while (bytes.size() < count && ::read(output_.number(), &byte, 1) == 1) {
            bytes += byte;
        }
        return bytes;
    }
    std::string hear_to_end() {
        return hear(std::string::npos);
    }

    std::string status() {
        const auto exit = tap_->await(host::after(patience));
        return exit ? describe(*exit) : "still running";
    }

    std::string read(const std::string& name) {
        std::ifstream stream(folder_ / name);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // Until the text stands in the file, which another process writes.
    bool await(const std::string& name, const std::string& text) {
        const auto deadline = host::after(patience);
        while (host::Clock::now() < deadline) {
            if (read(name).find(text) != std::string::npos) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ADD_FAILURE() << "\"" << text << "\" does not come into " << name << ":\n"
                      << last_of(read(name));
        return false;
    }

    static std::string last_of(const std::string& text) {
        return text.substr(text.size() - std::min<std::size_t>(text.size(), 1000));
    }

    // Lines with this mark, without their times.
    std::string recorded(char mark) {
        std::istringstream stream(read("record"));
        std::string lines;
        for (std::string line; std::getline(stream, line);) {
            if (line.size() > 10 && line[9] == mark) {
                lines += line.substr(9) + "\n";
            }
        }
        return lines;
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
    Descriptor input_;
    Descriptor output_;
    std::unique_ptr<host::ExitWatch> tap_;
};

constexpr const char* copies = "exec cat";

std::string all_bytes() {
    std::string bytes;
    for (int count = 0; count < 3 * 256; ++count) {
        bytes += static_cast<char>(count * 7);
    }
    return bytes;
}

TEST_F(TapTest, EveryByteOfBothDirectionsPassesUnchanged) {
    start(copies);
    std::string sent;
    for (int time = 0; time < 200; ++time) {
        say(all_bytes());
        sent += all_bytes();
        ASSERT_EQ(hear(all_bytes().size()), all_bytes());
    }
    input_.close();
    EXPECT_EQ(hear_to_end(), "");
    EXPECT_EQ(status(), "status 0");
}

TEST_F(TapTest, AHalfLinePassesAtOnce) {
    start(copies);
    say("CONN");
    EXPECT_EQ(hear(4), "CONN");
    say("ECT\n");
    EXPECT_EQ(hear(4), "ECT\n");
    say("and the end");
    input_.close();
    EXPECT_EQ(hear_to_end(), "and the end");
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(recorded('>'), "> CONNECT\n>\\ and the end\\\n");
    EXPECT_EQ(recorded('<'), "< CONNECT\n<\\ and the end\\\n");
}

TEST_F(TapTest, MuchAtOncePassesInOrder) {
    start(copies);
    std::string much;
    for (int number = 0; much.size() < 500'000; ++number) {
        much += std::to_string(number) + "\n";
    }
    std::thread writer([&] {
        host::write_all(input_, much, host::after(patience));
        input_.close();
    });
    const std::string came = hear_to_end();
    writer.join();
    EXPECT_TRUE(came == much) << came.size() << " bytes of " << much.size();
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(recorded('>').size(), much.size() + 2 * static_cast<std::size_t>(std::count(
                                                          much.begin(), much.end(), '\n')));
}

TEST_F(TapTest, TheWorkersStatusBecomesItsOwn) {
    for (const char* number : {"0", "1", "7", "255"}) {
        fs::remove(folder_ / "record");
        start(std::string("exit ") + number);
        EXPECT_EQ(status(), std::string("status ") + number);
        EXPECT_NE(read("record").find(std::string(" # the worker ended with status ") + number),
                  std::string::npos);
    }
}

TEST_F(TapTest, AWorkersDeathByASignalBecomesItsOwn) {
    for (const char* number : {"1", "6", "9", "11", "15"}) {
        fs::remove(folder_ / "record");
        start(std::string("kill -") + number + " $$");
        EXPECT_EQ(status(), std::string("signal ") + number);
        EXPECT_NE(read("record").find(std::string(" # the worker ended with signal ") + number),
                  std::string::npos);
    }
}

TEST_F(TapTest, SignalsArePassedOn) {
    for (const auto& [number, name] : {std::pair{SIGHUP, "HUP"},
                                       {SIGINT, "INT"},
                                       {SIGQUIT, "QUIT"},
                                       {SIGTERM, "TERM"},
                                       {SIGUSR1, "USR1"},
                                       {SIGUSR2, "USR2"}}) {
        fs::remove(folder_ / "record");
        start(std::string("trap 'echo caught; exit 5' ") + name +
              "\necho ready\nwhile :; do read line || sleep 0.01; done");
        EXPECT_EQ(hear(6), "ready\n");
        EXPECT_TRUE(tap_->signal(number));
        input_.close();
        EXPECT_EQ(hear(7), "caught\n") << name;
        EXPECT_EQ(status(), "status 5") << name;
        EXPECT_NE(read("record").find(" # the host sent signal " + std::to_string(number)),
                  std::string::npos);
    }
}

TEST_F(TapTest, TheEndOfTheInputIsPassedOnAndTheOutputGoesOn) {
    start("while read line; do :; done; echo behind the end; exec cat");
    input_.close();
    EXPECT_EQ(hear_to_end(), "behind the end\n");
    EXPECT_EQ(status(), "status 0");
    EXPECT_NE(read("record").find(" # the host closed the worker's input\n"), std::string::npos);
}

TEST_F(TapTest, AnOutputThatTheHostClosesIsClosedForTheWorker) {
    start(
        "trap '' PIPE\nread line\nwhile echo text 2>&-; do sleep 0.01; done\necho gone "
        ">\"$0/gone\"");
    output_.close();
    say("now\n");
    EXPECT_TRUE(await("gone", "gone"));
    EXPECT_EQ(status(), "status 0");
    EXPECT_NE(read("record").find(" # the host closed the worker's output\n"), std::string::npos);
}

TEST_F(TapTest, AnOutputThatTheWorkerClosesIsClosedForTheHost) {
    start("echo last; exec >&-; read line; exit 4");
    EXPECT_EQ(hear_to_end(), "last\n");
    say("the input is still open\n");
    EXPECT_EQ(status(), "status 4");
    EXPECT_NE(read("record").find(" # the worker closed its output\n"), std::string::npos);
}

TEST_F(TapTest, AnInputThatTheWorkerClosesIsClosedForTheHost) {
    start("exec <&-; echo closed; while [ ! -e \"$0/go\" ]; do sleep 0.01; done; echo on");
    EXPECT_EQ(hear(7), "closed\n");
    EXPECT_TRUE(await("record", " # the worker closed its input\n"));
    EXPECT_FALSE(host::write_all(input_, "nobody reads it\n", host::after(patience)));
    std::ofstream(folder_ / "go").flush();
    EXPECT_EQ(hear_to_end(), "on\n");
    EXPECT_EQ(status(), "status 0");
}

TEST_F(TapTest, WhatTheWorkerSaysLastComesBeforeItsStatus) {
    for (int time = 0; time < 20; ++time) {
        fs::remove(folder_ / "record");
        start("yes text | head -c 60000; exit 3");
        EXPECT_EQ(status(), "status 3");
        EXPECT_EQ(hear_to_end().size(), 60000u);
    }
}

TEST_F(TapTest, AProcessThatTheWorkerLeavesBehindHoldsNobodyUp) {
    start("sleep 1000 3>&- & echo $! >\"$0/left\"; echo done");
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(hear(5), "done\n");
    EXPECT_EQ(kill(std::stoi(read("left")), SIGKILL), 0) << "it must have outlived the tap";
}

TEST_F(TapTest, AHostThatDoesNotReadStopsTheWorker) {
    start("yes 'a line of text' | head -c 10000000; exit 0");
    EXPECT_TRUE(await("record", " # the host has not read for "));
#if defined(__linux__)
    // The host's own pipe, the tap's and what it holds; each recorded line has two bytes more.
    EXPECT_LT(recorded('<').size() / 18 * 16, 64u * 1024 + 3 * 4096);
#endif
    EXPECT_EQ(hear_to_end().size(), 10'000'000u);
    EXPECT_EQ(status(), "status 0");
    EXPECT_NE(read("record").find(" # the host reads again, after "), std::string::npos);
    EXPECT_NE(read("stderr").find("# output not read for 2 s\n"), std::string::npos);
}

#if defined(__linux__)
// As a worker itself can be ended that waits for its host to read.
TEST_F(TapTest, AHostThatReadsNothingMoreCanEndATapWhoseWorkerHasEnded) {
    const std::string almost_too_much = std::to_string(64 * 1024 + 4096);
    start("echo $$ >\"$0/worker\"; head -c " + almost_too_much + " /dev/zero; exit 5");
    EXPECT_TRUE(await("worker", "\n"));
    const int worker = std::stoi(read("worker"));
    const auto deadline = host::after(patience);
    while (kill(worker, 0) == 0 && host::Clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(tap_->signal(SIGTERM));
    EXPECT_EQ(status(), "status 5");
}

TEST_F(TapTest, AFewLinesThatTheHostDoesNotReadAreNoticedToo) {
    start("echo unread; read line");
    EXPECT_TRUE(await("record", " # the host has not read for "));
    say("on\n");
    EXPECT_EQ(status(), "status 0");
    const std::string complaints = read("stderr");
    EXPECT_NE(complaints.find(" < unread\n"), std::string::npos) << complaints;
}

TEST_F(TapTest, ASocketThatTheHostDoesNotReadIsNoticed) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    auto input = host::make_pipe();
    output_ = Descriptor(ends[0]);
    input_ = std::move(input->write_end);
    start(std::move(input->read_end), Descriptor(ends[1]), "echo unread; read line", {},
          "exec \"$@\"");
    EXPECT_TRUE(await("record", " # the host has not read for "));
    say("on\n");
    EXPECT_EQ(hear_to_end(), "unread\n");
    EXPECT_EQ(status(), "status 0");
}
#endif

TEST_F(TapTest, AHostThatReadsInTimeIsNotComplainedOf) {
    start("echo unread; read line; echo more; read line");
    for (const char* line : {"unread\n", "more\n"}) {
        // As late as a host may be.
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        EXPECT_EQ(hear(std::string(line).size()), line);
        say("on\n");
    }
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(read("stderr"), "tether tap: the host did nothing wrong; the record is " +
                                  (folder_ / "record").string() + "\n");
}

TEST_F(TapTest, AWorkerWhoseTapIsKilledSeesTheEndOfItsInput) {
    start("echo ready; while read line; do :; done; echo seen >\"$0/seen\"");
    EXPECT_EQ(hear(6), "ready\n");
    EXPECT_TRUE(tap_->signal(SIGKILL));
    EXPECT_EQ(status(), "signal 9");
    EXPECT_TRUE(await("seen", "seen"));
    EXPECT_TRUE(await("stderr", "# the worker killed before the ladder\n"));
    EXPECT_TRUE(await("record", " # the worker has ended\n"));
}

TEST_F(TapTest, AWorkerThatHangsIsKilledWithItsTap) {
    start("trap '' TERM; echo ready; while :; do sleep 1000 3>&-; done");
    EXPECT_EQ(hear(6), "ready\n");
    EXPECT_TRUE(tap_->signal(SIGKILL));
    EXPECT_EQ(status(), "signal 9");
    // Its end closes the last writing end of the pipe.
    EXPECT_TRUE(await("record", " # the worker was killed with the tap\n"));
}

// Behind a worker that has ended, another process could get its number, and be killed for it.
TEST_F(TapTest, AWorkersNumberIsNobodyElsesAsLongAsItMayBeKilled) {
    // It hangs without a child, which would be in its group too.
    start("mkfifo \"$0/nobody\"; echo $$; read line <\"$0/nobody\"");
    std::string number;
    do {
        number += hear(1);
    } while (number.back() != '\n');
    const int worker = std::stoi(number);
    ASSERT_TRUE(await("record", " < "));
    EXPECT_TRUE(tap_->signal(SIGKILL));
    EXPECT_EQ(status(), "signal 9");
    EXPECT_EQ(kill(-worker, SIGSTOP), 0);
    EXPECT_EQ(kill(worker, SIGKILL), 0);
    const auto deadline = host::after(patience);
    while (kill(worker, 0) == 0 && host::Clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(kill(-worker, 0), 0) << "nothing keeps the number";
    kill(-worker, SIGCONT);
    EXPECT_TRUE(await("record", " # the worker has ended\n"));
}

// One that was given its ladder is killed at once, as it would be without a tap.
TEST_F(TapTest, AWorkerThatHangsIsKilledAtOnceBehindTheLadder) {
    start("trap '' TERM; echo ready; while :; do sleep 1000 3>&-; done");
    EXPECT_EQ(hear(6), "ready\n");
    say("QUIT\n");
    std::this_thread::sleep_for(std::chrono::seconds(1));
    input_.close();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_TRUE(tap_->signal(SIGTERM));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_TRUE(tap_->signal(SIGKILL));
    const auto killed = host::Clock::now();
    EXPECT_TRUE(await("record", " # the worker was killed with the tap\n"));
    EXPECT_LT(host::Clock::now() - killed, std::chrono::seconds(3));
    EXPECT_TRUE(await("stderr", "tether tap: the host did nothing wrong"));
}

TEST_F(TapTest, AComplaintIsAStatusOfThreeOnRequest) {
    start("read line; exit 7", {"--strict"});
    say("__CARD_CHECK\n");
    EXPECT_EQ(status(), "status 3");
    EXPECT_NE(read("stderr").find("# an internal command\n"), std::string::npos);
    fs::remove(folder_ / "record");
    start("read line; exit 7", {"--strict"});
    say("PRIME\n");
    EXPECT_EQ(status(), "status 7");
}

TEST_F(TapTest, ComplaintsAreKeptInTheRecord) {
    start("read line; exit 0");
    say("__CARD_CHECK\n");
    EXPECT_EQ(status(), "status 0");
    EXPECT_NE(read("record").find(" s: an internal command\n"), std::string::npos);
}

TEST_F(TapTest, ARedactedRecordHoldsNoPathsAndNames) {
    start("echo 'CONNECTED|MODEL-A'; read line; exit 0", {"--redact"});
    say("SET_DOWNLOAD_DIR|/home/somebody\n");
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(recorded('>'), "> SET_DOWNLOAD_DIR|<folder>\n");
    EXPECT_EQ(recorded('<'), "< CONNECTED|<camera 1>\n");
}

TEST_F(TapTest, StandardErrorAndAnInheritedDescriptorAreTheWorkers) {
    start("echo to the error >&2; echo to the third >&3", {},
          "exec 3>\"" + (folder_ / "third").string() + "\"; exec \"$@\"");
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(read("stderr").starts_with("to the error\n")) << read("stderr");
    EXPECT_EQ(read("third"), "to the third\n");
}

TEST_F(TapTest, WithoutANameTheRecordGoesIntoTheWorkingDirectory) {
    const host::SpawnRequest request{
        "/bin/sh",
        {"-c", "cd \"$1\" && exec \"$2\" tap /bin/sh -c 'exit 6'", "sh", folder_, TETHER_COMMAND},
        {},
        folder_ / "stderr"};
    EXPECT_EQ(describe(*::start(request)->await_exit(host::after(patience))), "status 6");
    int records = 0;
    for (const auto& entry : fs::directory_iterator(folder_)) {
        const std::string name = entry.path().filename();
        if (name.starts_with("tether-tap-20") && name.ends_with(".record")) {
            ++records;
            EXPECT_NE(read("stderr").find("the record is " + name), std::string::npos);
        }
    }
    EXPECT_EQ(records, 1);
}

TEST_F(TapTest, AFolderThatTakesNoRecordCostsNoWorker) {
    if (geteuid() == 0) {
        // Nothing is closed to root but what is no folder of files.
        const host::SpawnRequest request{
            "/bin/sh",
            {"-c", "cd /proc && exec \"$1\" tap /bin/sh -c 'exit 6'", "sh", TETHER_COMMAND},
            {},
            folder_ / "stderr"};
        if (!fs::exists("/proc/self")) {
            GTEST_SKIP() << "no folder here takes no files";
        }
        EXPECT_EQ(describe(*::start(request)->await_exit(host::after(patience))), "status 6");
    } else {
        fs::create_directory(folder_ / "closed");
        fs::permissions(folder_ / "closed", fs::perms::owner_read | fs::perms::owner_exec);
        const host::SpawnRequest request{
            "/bin/sh",
            {"-c", "cd \"$1/closed\" && exec \"$2\" tap /bin/sh -c 'exit 6'", "sh", folder_,
             TETHER_COMMAND},
            {},
            folder_ / "stderr"};
        EXPECT_EQ(describe(*::start(request)->await_exit(host::after(patience))), "status 6");
    }
    EXPECT_NE(read("stderr").find("; no record is kept\n"), std::string::npos) << read("stderr");
}

TEST_F(TapTest, WrongCallsAreSaidSo) {
    std::ofstream(folder_ / "mine") << "a picture, perhaps";
    const struct {
        std::vector<std::string> arguments;
        std::string said;
    } calls[] = {
        {{}, "tether: which worker? tether tap [OPTIONS] WORKER [ARGUMENTS]\n"},
        {{"/no/such/worker"}, "tether: there is no worker at /no/such/worker\n"},
        {{"--record", folder_ / "mine", "/bin/true"},
         "tether: cannot write " + (folder_ / "mine").string() +
             ": it is not empty, and a record replaces nothing\n"},
        {{"--record", folder_ / "new", "/"}, "tether: cannot start /: Permission denied\n"},
    };
    for (const auto& call : calls) {
        fs::remove(folder_ / "stderr");
        std::vector<std::string> arguments{"tap"};
        arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
        const auto command = ::start({TETHER_COMMAND, arguments, {}, folder_ / "stderr"});
        EXPECT_EQ(describe(*command->await_exit(host::after(patience))), "status 2");
        EXPECT_EQ(read("stderr"), call.said);
    }
    EXPECT_EQ(read("mine"), "a picture, perhaps");
}

}  // namespace
