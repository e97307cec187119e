// What the runner of the transcripts lets pass and what it does not, with scripts in the worker's
// place.
#include "tests/worker/runner/playing/performance.h"

#include <fstream>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/temporary_folder.h"
#include "tests/worker/runner/reading/read_transcript.h"

namespace {

using namespace transcript;
namespace fs = std::filesystem;

class PerformanceTest : public testing::Test {
  protected:
    PerformanceTest() {
        fs::create_directories(folder_ / "Contents/MacOS");
    }

    // Plays the steps against the script; "ok" or what was expected and what came.
    std::string play(const std::string& script, const std::string& steps) {
        const fs::path file = folder_ / "a.transcript";
        std::ofstream(file) << "# x\n@ cold\n" + steps;
        std::string error;
        const auto transcript = read_transcript(file, error);
        EXPECT_TRUE(transcript) << error;
        const fs::path worker = folder_ / "Contents/MacOS/worker";
        std::ofstream(worker) << "#!/bin/sh\n" + script + "\n";
        fs::permissions(worker, fs::perms::owner_all);
        const auto failure = perform(*transcript, worker);
        if (!failure) {
            return "ok";
        }
        return std::to_string(failure->place.line) + ": " + failure->expected + " / " +
               failure->came + (failure->complaints.empty() ? "" : " / " + failure->complaints);
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
};

// Answers "hello" to the first line and ends on the second.
constexpr const char* polite = "read line; echo hello; read line; exit 0";

TEST_F(PerformanceTest, WhatIsExpectedPasses) {
    EXPECT_EQ(play(polite, "> a\n< hello\n"), "ok");
    EXPECT_EQ(play(polite, "> a\n< hello\n> b\n@ exits 0 within 10s\n"), "ok");
    EXPECT_EQ(play("echo a; echo b; read line", "{\n< b\n|\n< a\n}\n@ close stdin\n@ exits 1\n"),
              "ok");
    EXPECT_EQ(play("echo \"$1\"; exit 3", "@ arguments \"a  b\"\n< a  b\n@ exits 3\n"), "ok");
    EXPECT_EQ(play("cat; exit 0", ">> \"a\\r\\nb\"\n<< \"a\\r\"\n@ close stdin\n@ exits 0\n"),
              "6: exit with status 0, and no further line / < b");
}

TEST_F(PerformanceTest, AnotherLineFails) {
    EXPECT_EQ(play("echo hullo; read line", "< hello\n").substr(0, 21), "3: < hello / < hullo,");
    EXPECT_EQ(play("echo 'hello '; read line", "< hello\n").substr(0, 22),
              "3: < hello / < hello ,");
}

TEST_F(PerformanceTest, ALineTooManyFails) {
    EXPECT_EQ(play("read line; echo hello; echo again; read line", "> a\n< hello\n"),
              "4: exit with status 0, and no further line / < again");
}

TEST_F(PerformanceTest, ALineThatDoesNotComeFails) {
    EXPECT_EQ(play("exit 4", "< hello\n"), "3: < hello / the end of the output (status 4)");
    EXPECT_EQ(play("kill -9 $$", "{\n< hello\n|\n< there\n}\n"),
              "3: < hello  or  < there / the end of the output (signal 9)");
}

TEST_F(PerformanceTest, ALineWithoutItsLineFeedFails) {
    EXPECT_EQ(play("printf hello", "< hello\n").substr(0, 39),
              "3: < hello / < hello (without a line fe");
}

TEST_F(PerformanceTest, ALineBeforeItsTimeFails) {
    EXPECT_EQ(play(polite, "> a\n< +10s hello\n").substr(0, 22), "4: < hello / < hello, ");
    EXPECT_EQ(play("read line; sleep 0.2; echo hello; read line", "> a\n< +200ms hello\n"), "ok");
}

TEST_F(PerformanceTest, AnotherEndFails) {
    EXPECT_EQ(play("echo hello; read line; exit 1", "< hello\n").substr(0, 33),
              "3: exit with status 0 / status 1 ");
    EXPECT_EQ(play("echo hello; read line; kill -6 $$", "< hello\n").substr(0, 32),
              "3: exit with status 0 / signal 6");
    EXPECT_EQ(play("read line; exit 0", "> a\n@ exits 0 after 10s\n").substr(0, 50),
              "4: exit with status 0 after 10000 ms / status 0 af");
    EXPECT_EQ(play("read line; sleep 0.2; exit 0", "> a\n@ exits 0 within 100ms\n").substr(0, 50),
              "4: exit with status 0 within 100 ms / status 0 aft");
}

TEST_F(PerformanceTest, AComplaintFailsThoughAllElseIsRight) {
    EXPECT_EQ(play("echo hello; echo oh no >&2; read line", "< hello\n"),
              "3: nothing on standard error / complaints / oh no\n");
    EXPECT_EQ(play("echo hello; echo 'camera-sim: simulated SDK, no real camera is driven' >&2; "
                   "read line",
                   "< hello\n"),
              "ok");
}

TEST_F(PerformanceTest, CallsAreComparedEvenAfterTheEnd) {
    const std::string script =
        "echo hello; read line; printf '1\\t0\\tmain\\tRelease\\ttrue\\n' > $CAMERA_SIM_JOURNAL";
    EXPECT_EQ(play(script, "< hello\n=\n> QUIT\n@ exits 0\n= Release\n"), "ok");
    EXPECT_EQ(play(script, "< hello\n> QUIT\n@ exits 0\n=\n"),
              "6: = / Release besides; asked of the camera since the last =:\n"
              "        Release -> true");
    EXPECT_EQ(play(script, "< hello\n> QUIT\n@ exits 0\n= Disconnect 1\n"),
              "6: = Disconnect 1 / Release in the place of Disconnect 1; asked of the camera since "
              "the last =:\n        Release -> true");
}

TEST_F(PerformanceTest, ACameraThatCannotBeToldFails) {
    EXPECT_EQ(play("echo hello; read line", "< hello\n! card out\n"),
              "4: ok from the camera / no answer from the camera");
}

TEST_F(PerformanceTest, FolderAndBundleAreFilledIn) {
    EXPECT_EQ(play("ls -A \"$1\"; echo \"$1\"; read line", "@ arguments {dir}\n< {dir}\n"), "ok");
    EXPECT_EQ(play("echo \"${0%/MacOS/worker}\"; read line", "< {bundle}\n"), "ok");
}

TEST_F(PerformanceTest, WithoutAdapterTheWorkerRunsFromACopy) {
    EXPECT_EQ(play("echo \"$0\"; ls \"${0%/*}/../Frameworks\"; read line",
                   "@ no adapter\n< {bundle}/MacOS/worker\n< SonySDK\n"),
              "ok");
}

}  // namespace
