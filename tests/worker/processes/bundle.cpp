// The worker finds its SDK and its adapters from wherever its bundle stands.

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "host/process/beside_this_program.h"
#include "tests/worker/processes/bundle_copy.h"
#include "tests/worker/processes/live_worker.h"

namespace {

namespace fs = std::filesystem;

Plan with(const fs::path& worker) {
    Plan plan;
    plan.worker = worker;
    return plan;
}

void expect_adapters_line(LiveWorker& worker, const std::string& line) {
    EXPECT_EQ(worker.next(), "CPP_WORKER|START sony-1.0");
    EXPECT_EQ(worker.next(), "LOG|[SONY] USB transport adapters " + line);
    EXPECT_TRUE(worker.await_line("READY|OK"));
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

TEST(Bundle, MayStandInAFolderOfAnyName) {
    for (const char* name : {"a folder", "Größe 写真", "100% | $ORIGIN 'quoted' \"twice\"",
                             "\xFF\xFE", "-n", "a\tb;c&d*"}) {
        const BundleCopy copy(name);
        LiveWorker worker(with(copy.worker()));
        expect_adapters_line(
            worker, "found: " + (copy.contents() / "MacOS").string() + "/../Frameworks/CrAdapter");
    }
}

TEST(Bundle, MayStandThreeThousandBytesDeep) {
    if (!fs::exists("/proc/self/exe")) {
        GTEST_SKIP() << "this system cannot start a program from so far down";
    }
    fs::path name;
    for (int level = 0; level < 12; ++level) {
        name /= std::string(250, 'x');
    }
    const BundleCopy copy(name);
    LiveWorker worker(with(copy.worker()));
    expect_adapters_line(
        worker, "found: " + (copy.contents() / "MacOS").string() + "/../Frameworks/CrAdapter");
}

TEST(Bundle, AMissingAdapterIsReportedAndNothingElse) {
    const BundleCopy copy("Bundle");
    fs::remove(copy.contents() / "Frameworks/CrAdapter/libCr_PTP_USB.dylib");
    LiveWorker worker(with(copy.worker()));
    expect_adapters_line(worker,
                         "are MISSING from " + (copy.contents() / "MacOS").string() +
                             "/../Frameworks/CrAdapter — the SDK will not see any camera (0x8703)");
}

TEST(Bundle, IsFoundThroughALinkToTheBundle) {
    const BundleCopy copy("Bundle");
    const fs::path link = copy.folder() / "link to the bundle";
    fs::create_directory_symlink("Bundle", link);
    LiveWorker worker(with(link / "Contents/MacOS/sony-worker"));
#if defined(__APPLE__)
    const fs::path contents = link / "Contents";  // here a program is where it was started
#else
    const fs::path contents = copy.contents();
#endif
    expect_adapters_line(worker,
                         "found: " + (contents / "MacOS").string() + "/../Frameworks/CrAdapter");
}

#if !defined(__APPLE__)
TEST(Bundle, IsFoundThroughALinkToTheWorker) {
    const BundleCopy copy("Bundle");
    const fs::path link = copy.folder() / "link to the worker";
    fs::create_symlink(copy.worker(), link);
    LiveWorker worker(with(link));
    expect_adapters_line(
        worker, "found: " + (copy.contents() / "MacOS").string() + "/../Frameworks/CrAdapter");
}
#endif

TEST(Bundle, MayBeStartedByARelativePath) {
    const BundleCopy copy("Bundle");
    Plan plan = with(copy.worker());
    plan.shell = "cd \"${1%/*}/..\" && exec MacOS/sony-worker";
    LiveWorker worker(plan);
    EXPECT_EQ(worker.next(), "CPP_WORKER|START sony-1.0");
    EXPECT_EQ(worker.next().rfind("LOG|[SONY] USB transport adapters found: ", 0), 0U);
}

TEST(Bundle, APathThatIsTooLongIsNotChecked) {
    if (!fs::exists("/proc/self/exe")) {
        GTEST_SKIP() << "this system cannot start a program from so far down";
    }
    Plan plan;
    // The dynamic linker cannot tell where the worker stands either.
    plan.environment = {{"LD_LIBRARY_PATH", host::worker_beside_this_program().parent_path() /
                                                "../Frameworks/SonySDK"}};
    plan.shell =
        "cd \"${CAMERA_SIM_SCENE%/*}\" && name=$(printf %0250d 1)\n"
        "for level in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17; do mkdir $name && cd -P $name; "
        "done\n"
        "cp \"$1\" . && exec ./sony-worker";
    LiveWorker worker(plan);
    EXPECT_EQ(worker.next(), "CPP_WORKER|START sony-1.0");
    EXPECT_EQ(worker.next(), "LOG|[SONY] Camera Remote SDK 1.0.0");
    EXPECT_EQ(worker.next(), "READY|OK");
    worker.expect_prompt_end([&] { worker.send("QUIT"); });
}

}  // namespace
