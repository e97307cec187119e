// A worker is started: a good one, and scripts in its place that go wrong in every way.
#include <chrono>
#include <optional>
#include <stdlib.h>
#include <string>

#include "tests/tether/doctor/bundle_fixture.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

class Start : public BundleTest {
  protected:
    doctor::Finding start(const doctor::StartTimes& times = {}) const {
        return doctor::worker_starts(worker, times);
    }

    static doctor::StartTimes impatient() {
        return {milliseconds(300), {milliseconds(200), milliseconds(100), milliseconds(100)}};
    }
};

TEST_F(Start, TheWorkerGetsReadyAndLeaves) {
    const std::string finding = said(start());
    EXPECT_TRUE(finding.starts_with("ok start: ready after ")) << finding;
    EXPECT_TRUE(holds(finding, " s, sony-1.0, SDK 1.0.0")) << finding;
}

TEST_F(Start, TheSdkIsMissing) {
    fs::remove(sdk);
    const doctor::Finding finding = start();
    EXPECT_TRUE(said(finding).starts_with("FAIL start: the worker ended with ")) << finding.text;
    EXPECT_TRUE(holds(finding.advice, "libCr_Core")) << finding.advice;
}

TEST_F(Start, NoProgramOfThisSystem) {
    write(worker,
          "\x7F"
          "ELF of another world");
    fs::permissions(worker, fs::perms::owner_all);
    EXPECT_EQ(said(start()), "FAIL start: cannot start " + worker.string() + ": Exec format error");
}

TEST_F(Start, ItEndsAtOnce) {
    write_script("for i in 1 2 3 4 5 6 7 8; do echo complaint $i >&2; done; exit 3");
    const doctor::Finding finding = start();
    EXPECT_EQ(said(finding), "FAIL start: the worker ended with status 3 before it was ready");
    EXPECT_EQ(finding.advice,
              "complaint 1\ncomplaint 2\ncomplaint 3\ncomplaint 4\ncomplaint 5\ncomplaint 6");
}

TEST_F(Start, ItEndsByASignalWithoutAWord) {
    write_script("echo 'CPP_WORKER|START sony-1.0'; kill -9 $$");
    const doctor::Finding finding = start();
    EXPECT_EQ(said(finding), "FAIL start: the worker ended with signal 9 before it was ready");
    EXPECT_EQ(finding.advice, "It wrote nothing to standard error.");
}

TEST_F(Start, NoTemporaryFileCanBeMade) {
    write_script("echo complaint >&2; exit 3");
    const char* const set = getenv("TMPDIR");
    const std::optional<std::string> before = set ? std::optional<std::string>(set) : std::nullopt;
    for (const fs::path& place : {folder / "none", fs::path("/proc")}) {
        setenv("TMPDIR", place.c_str(), 1);
        const doctor::Finding finding = start();
        EXPECT_EQ(said(finding), "FAIL start: the worker ended with status 3 before it was ready");
        EXPECT_EQ(finding.advice,
                  "What it wrote to standard error is lost: no temporary file can be made.");
    }
    before ? setenv("TMPDIR", before->c_str(), 1) : unsetenv("TMPDIR");
}

TEST_F(Start, ItCannotStartTheSdk) {
    write_script(
        "echo 'CPP_WORKER|START sony-1.0'\n"
        "echo 'ERROR|Sony Camera Remote SDK failed to initialise'; exit 1");
    EXPECT_EQ(said(start()),
              "FAIL start: the worker says \"ERROR|Sony Camera Remote SDK failed to initialise\"");
}

TEST_F(Start, ItHangs) {
    write_script("while read line; do :; done");
    EXPECT_EQ(said(start(impatient())), "FAIL start: the worker is not ready after 0.30 s");
}

TEST_F(Start, ItTalksWithoutEnd) {
    // Faster than it is listened to, also once it is ready.
    for (const char* before : {"", "echo 'READY|OK'; "}) {
        write_script("echo 'CPP_WORKER|START sony-1.0'; " + std::string(before) +
                     "exec yes 'LOG|[SONY] and so on'");
        EXPECT_EQ(said(start()), "FAIL start: the worker writes without end") << before;
    }
}

TEST_F(Start, ItComplainsWithoutEnd) {
    // With its output closed and open, and when it should leave.
    for (const char* before :
         {"", "exec 3>&1; ", "exec 3>&1; echo 'CPP_WORKER|START sony-1.0'; echo 'READY|OK'; "}) {
        write_script(before + std::string("exec yes 'it hurts' >&2"));
        const doctor::Finding finding = start();
        EXPECT_EQ(said(finding), "FAIL start: the worker writes without end");
        EXPECT_EQ(finding.advice, "it hurts\nit hurts\nit hurts\nit hurts\nit hurts\nit hurts");
    }
}

TEST_F(Start, ItClosesItsOutput) {
    write_script("exec >&-; while read line; do :; done");
    EXPECT_EQ(said(start(impatient())),
              "FAIL start: the worker closes its output before it is ready");
}

TEST_F(Start, ItComplainsInOneLineWithoutEnd) {
    write_script("exec tr '\\0' x </dev/zero >&2");
    const doctor::Finding finding = start();
    EXPECT_EQ(said(finding), "FAIL start: the worker writes without end");
    EXPECT_EQ(finding.advice, std::string(2000, 'x'));
}

TEST_F(Start, ItSaysOneLineWithoutEnd) {
    for (const char* before : {"", "echo 'CPP_WORKER|START sony-1.0'; ",
                               "echo 'CPP_WORKER|START sony-1.0'; echo 'READY|OK'; read line; "}) {
        write_script(before + std::string("exec cat /dev/zero"));
        EXPECT_EQ(said(start()),
                  "FAIL start: the worker wrote a line of more than 65,536 bytes and was ended")
            << before;
    }
}

TEST_F(Start, WhatItSaysDoesNotReachTheTerminalRaw) {
    write_script("printf '\\033[2J\\377\\000\\n'; printf '\\033[2J\\a\\n' >&2; read line");
    const doctor::Finding finding = start();
    EXPECT_EQ(said(finding), "FAIL start: the worker says \"\\x1B[2J\\xFF\\x00\"");
    EXPECT_TRUE(finding.advice == "\\x1B[2J\\x07" ||
                finding.advice == "It wrote nothing to standard error.")
        << finding.advice;
}

TEST_F(Start, ItTalksNonsense) {
    write_script("echo 'Hello, I am a shell'; while read line; do :; done");
    EXPECT_EQ(said(start()), "FAIL start: the worker says \"Hello, I am a shell\"");
    write_script("echo 'READY|OK'; while read line; do :; done");
    EXPECT_EQ(said(start()), "FAIL start: the worker says \"READY|OK\"") << "without its banner";
}

TEST_F(Start, ItDoesNotLeave) {
    for (const char* ending :
         {"exec sleep 1000", "while read line; do :; done", "read line; exit 2"}) {
        write_script("echo 'CPP_WORKER|START sony-1.0'; echo 'READY|OK'\n" + std::string(ending));
        EXPECT_EQ(said(start({std::chrono::seconds(30), impatient().end})),
                  "FAIL start: the worker gets ready, but does not end in order at a QUIT")
            << ending;
    }
}

}  // namespace
