// Standard streams that are closed, full or somewhere else.

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <stdlib.h>
#include <string>
#include <system_error>

#include "tests/temporary_folder.h"
#include "tests/worker/processes/live_worker.h"
#include "tests/worker/processes/pace.h"

namespace {

Plan started_by(const std::string& shell) {
    Plan plan;
    plan.shell = shell;
    return plan;
}

std::string content_of(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(Descriptors, AHostThatClosedItsReadingEndIsServedUntilItQuits) {
    LiveWorker worker;
    worker.expect_opening();
    worker.close_output();
    worker.send_bytes("PRIME\nCONNECT\n");
    EXPECT_TRUE(worker.await_call("SetDeviceProperty 0x0119 3"));
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

TEST(Descriptors, AFullDiskBehindStandardOutputIsNoReasonToStop) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "this system has no /dev/full";
    }
    LiveWorker worker(started_by("exec \"$@\" >/dev/full"));
    worker.send("CONNECT");
    EXPECT_TRUE(worker.await_call("SetDeviceProperty 0x0119 3"));
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

TEST(Descriptors, WithoutStandardInputTheWorkerLeavesAtOnce) {
    LiveWorker worker(started_by("exec \"$@\" <&-"));
    worker.expect_opening();
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

TEST(Descriptors, StandardInputMayBeAFile) {
    LiveWorker worker(started_by("exec \"$@\" <\"$CAMERA_SIM_SCENE\""));
    worker.expect_opening();
    EXPECT_EQ(worker.next(), "ERROR|Unknown command: timing instant");
    EXPECT_EQ(worker.next(), "(end of output)");
    EXPECT_TRUE(worker.exit().clean());
}

// What is closed at the start leads nowhere, and nothing else is opened with it.
void expect_to_lead_nowhere(LiveWorker& worker, const std::string& descriptor) {
    worker.send("CONNECT");
    EXPECT_TRUE(worker.await_call("SetDeviceProperty 0x0119 3"));
    const std::filesystem::path descriptors =
        "/proc/" + std::to_string(worker.process().process()) + "/fd";
    EXPECT_EQ(std::filesystem::read_symlink(descriptors / descriptor), "/dev/null");
    std::error_code closed;
    EXPECT_NE(std::filesystem::read_symlink(descriptors / "3", closed), "/dev/null");
}

TEST(Descriptors, AClosedStandardOutputLeadsNowhere) {
    if (!std::filesystem::exists("/proc/self/fd")) {
        GTEST_SKIP() << "this system does not tell where a descriptor leads";
    }
    LiveWorker worker(started_by("exec \"$@\" >&-"));
    expect_to_lead_nowhere(worker, "1");
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

TEST(Descriptors, AClosedStandardErrorLeadsNowhere) {
    if (!std::filesystem::exists("/proc/self/fd")) {
        GTEST_SKIP() << "this system does not tell where a descriptor leads";
    }
    LiveWorker worker(started_by("exec \"$@\" 2>&-"));
    expect_to_lead_nowhere(worker, "2");
}

// A descriptor that is closed at the start gets the number of the next file that is opened: what
// the worker writes then would stand in the journal.
class ClosedAtTheStart : public testing::TestWithParam<const char*> {};

TEST_P(ClosedAtTheStart, NoLineOfTheWorkerLandsInAFile) {
    Plan plan = started_by(std::string("exec \"$@\" ") + GetParam());
    const TemporaryFolder folder;
    const std::string journal_file = folder.path() / "journal";
    plan.environment = {{"CAMERA_SIM_JOURNAL", journal_file}};
    {
        LiveWorker worker(plan);
        worker.send_bytes("CONNECT\nCAPTURE\nQUIT\n");
        EXPECT_TRUE(worker.exit().clean());
    }
    const std::string journal = content_of(journal_file);
    EXPECT_NE(journal.find("\tInit 0\ttrue\n"), std::string::npos);
    EXPECT_NE(journal.find("\tRelease\ttrue\n"), std::string::npos);
    EXPECT_EQ(journal.find('|'), std::string::npos) << journal;
    EXPECT_EQ(journal.find("camera-sim"), std::string::npos) << journal;
}

INSTANTIATE_TEST_SUITE_P(Each, ClosedAtTheStart,
                         testing::Values("<&-", ">&-", "2>&-", "<&- >&-", "<&- 2>&-", ">&- 2>&-",
                                         "<&- >&- 2>&-"));

}  // namespace
