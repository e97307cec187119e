// A worker that writes without end costs the host neither its memory nor its patience.
#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/host/child.h"

namespace {

using host::after;
using host::describe;
using host::EndedBy;

constexpr const char* too_long = "the worker wrote a line of more than 65,536 bytes and was ended";
constexpr const char* too_many =
    "the worker wrote faster than its lines were taken and was ended with more than 8,388,608 "
    "bytes waiting";

// The most memory that this process ever had resident, in kibibytes; 0 where the system does not
// tell.
long peak_memory() {
    std::ifstream file("/proc/self/status");
    for (std::string word; file >> word;) {
        if (word == "VmHWM:") {
            long peak = 0;
            file >> peak;
            return peak;
        }
    }
    return 0;
}

// The lines that wait twice while a buffer grows, and a sanitizer's own keeping of them.
constexpr long most_growth = 256L * 1024;

TEST(Flood, AnEndlessLineEndsTheWorker) {
    const long before = peak_memory();
    const auto child = start({"/bin/cat", {"/dev/zero"}, {}, {}});
    EXPECT_EQ(next_text(*child), "(end of output)");
    EXPECT_EQ(child->trouble(), too_long);
    EXPECT_TRUE(child->await_exit(after(patience)));
    EXPECT_LE(peak_memory() - before, most_growth);
}

// Nobody asks for a line: the library ends the worker by itself.
TEST(Flood, LinesThatNobodyTakesEndTheWorker) {
    for (const char* line : {"", "y", "LOG|[SONY] and so on"}) {
        const long before = peak_memory();
        const auto child = start({"/usr/bin/yes", {line}, {}, {}});
        EXPECT_TRUE(child->await_exit(after(patience)));
        EXPECT_EQ(child->trouble(), too_many);
        EXPECT_FALSE(child->output_ended()) << "the lines before can still be taken";
        EXPECT_EQ(next_text(*child), line);
        EXPECT_LE(peak_memory() - before, most_growth);
        EXPECT_EQ(child->end().by, EndedBy::itself);
    }
}

TEST(Flood, TheLinesBeforeItCanStillBeTaken) {
    const auto child = start_script(
        "echo 'CPP_WORKER|START sony-1.0'; echo 'DOWNLOADED|/a.JPG'; exec cat /dev/zero");
    EXPECT_TRUE(child->await_exit(after(patience)));
    EXPECT_EQ(child->trouble(), too_long);
    EXPECT_EQ(next_text(*child), "CPP_WORKER|START sony-1.0");
    EXPECT_EQ(next_text(*child), "DOWNLOADED|/a.JPG");
    EXPECT_EQ(next_text(*child), "(end of output)");
}

TEST(Flood, AWorkerThatHearsNothingIsKilledForIt) {
    const auto child = start_script(
        "trap '' TERM PIPE; head -c 70000 /dev/zero 2>/dev/null; while :; do sleep 0.01; done");
    const auto exit = child->await_exit(after(patience));
    ASSERT_TRUE(exit);
    EXPECT_EQ(describe(*exit), "signal 9");
    EXPECT_EQ(child->trouble(), too_long);
}

TEST(Flood, AWorkerThatHearsAQuitLeavesInOrder) {
    const auto child = start_script(
        "trap '' PIPE; head -c 70000 /dev/zero 2>/dev/null; read line; [ \"$line\" = QUIT ] || "
        "exit 9");
    const auto exit = child->await_exit(after(patience));
    ASSERT_TRUE(exit);
    EXPECT_EQ(describe(*exit), "status 0");
    EXPECT_EQ(child->trouble(), too_long);
}

TEST(Flood, TheHostMayLetGoOfTheWorkerInTheMiddleOfIt) {
    for (int round = 0; round < 20; ++round) {
        const auto child = start({"/usr/bin/yes", {}, {}, {}});
        EXPECT_EQ(next_text(*child), "y");
    }
}

TEST(Flood, AWorkerWithinTheLimitsIsLeftAlone) {
    const std::string line(999, 'x');
    const auto child =
        start_script("head -c 65536 /dev/zero; echo; yes " + line + " | head -n 8200");
    ASSERT_TRUE(child->await_exit(after(patience))->clean());
    EXPECT_EQ(next_text(*child), std::string(65'536, '\0'));
    for (int number = 0; number < 8200; ++number) {
        ASSERT_EQ(next_text(*child), line);
    }
    EXPECT_EQ(next_text(*child), "(end of output)");
    EXPECT_EQ(child->trouble(), "");
}

TEST(Flood, AHostCanChooseItsLimits) {
    std::string error;
    const Child child(
        host::WorkerProcess::start({"/bin/sh", {"-c", "echo 1234; echo 12345; read line"}, {}, {}},
                                   error, {4, 1000})
            .release());
    ASSERT_TRUE(child) << error;
    EXPECT_TRUE(child->await_exit(after(patience)));
    EXPECT_EQ(next_text(*child), "1234");
    EXPECT_EQ(next_text(*child), "(end of output)");
    EXPECT_EQ(child->trouble(), "the worker wrote a line of more than 4 bytes and was ended");
}

}  // namespace
