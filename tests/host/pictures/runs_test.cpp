// A staging folder for each worker, and the lock that says that the worker lives.

#include <fcntl.h>
#include <regex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/open_descriptors.h"
#include "tests/host/pictures/desk.h"

namespace {

using host::Code;

bool is_held(const fs::path& lock) {
    const int file = ::open(lock.c_str(), O_RDWR | O_CLOEXEC);
    const bool held = file >= 0 && ::flock(file, LOCK_EX | LOCK_NB) != 0;
    ::close(file);
    return held;
}

class Runs : public testing::Test {
  protected:
    Runs() : desk_(folder_.path()) {
        desk_.open();
    }
    host::FolderOpened open(const fs::path& folder) {
        return desk_.ask<host::FolderOpened>(
            host::OpenFolder{desk_.next_ticket(), folder.string()});
    }
    OpenedRun open_run_in(const fs::path& folder, const std::string& moved_from) {
        const auto opened = desk_.ask<host::RunOpened>(
            host::OpenRun{desk_.next_ticket(), folder.string(), moved_from});
        return {opened.run, opened.staging, opened.lock_descriptor};
    }
    static fs::path lock_of(const OpenedRun& run) {
        return run.staging.string() + ".lock";
    }

    TemporaryFolder folder_;
    Desk desk_;
};

TEST_F(Runs, AStagingFolderIsItsOwnersOnly) {
    const OpenedRun run = desk_.open_run();
    EXPECT_EQ(run.staging, folder_.path() / ".incoming" / run.name);
    struct stat facts {};
    ASSERT_EQ(::stat(run.staging.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700U);
    EXPECT_NE(desk_.open_run().name, run.name);
}

TEST_F(Runs, ARunIsCalledByItsTimeAndANumberThatIsDrawn) {
    host::pictures::Options options = impatient();
    options.time_of_day = [] {
        return std::chrono::milliseconds(1714567890123);
    };
    Desk desk(folder_.path() / "below", options);
    desk.open();
    const std::string name = desk.open_run().name;
    EXPECT_TRUE(std::regex_match(name, std::regex("run-20240501-125130-[0-9a-f]{16}"))) << name;
    EXPECT_NE(name.substr(20, 8), "00000000") << "all of the number is drawn";
}

TEST_F(Runs, OnlyTheWorkerHoldsTheLockOnceItRuns) {
    const OpenedRun run = desk_.open_run();
    EXPECT_TRUE(is_held(lock_of(run)));
    // No other process that is started meanwhile may get it.
    EXPECT_EQ(::fcntl(run.lock, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    const int inherited = ::dup(run.lock);
    desk_.store().work(host::RunBegun{run.name, 4711});
    EXPECT_EQ(read_file(lock_of(run)), "4711\n");
    EXPECT_EQ(::fcntl(run.lock, F_GETFD), -1);
    EXPECT_TRUE(is_held(lock_of(run)));
    ::close(inherited);
    EXPECT_FALSE(is_held(lock_of(run)));
}

TEST_F(Runs, NoRunIsMadeInAFolderThatIsNotOpen) {
    TemporaryFolder other;
    const std::string where = other.path().string();
    EXPECT_EQ(
        desk_.ask<host::RunNotOpened>(host::OpenRun{7, where, ""}).problem,
        (host::Problem{
            Code::folder_gone, "The folder " + where + " was moved, deleted or ejected.", {}, {}}));
    EXPECT_TRUE(fs::is_empty(other.path()));
    EXPECT_EQ(
        desk_.ask<host::RunNotOpened>(host::OpenRun{8, folder_.path().string(), "run-unknown"})
            .problem,
        (host::Problem{Code::folder_not_taken, "The worker has gone.", {}, {}}));
}

TEST_F(Runs, AWorkerThatIsMovedKeepsTheLockOfItsFirstRun) {
    TemporaryFolder second;
    TemporaryFolder third;
    open(second.path());
    open(third.path());
    const OpenedRun first = desk_.open_run();
    const int inherited = ::dup(first.lock);
    // A run begins once.
    desk_.store().work(host::RunBegun{first.name, 4711});
    desk_.store().work(host::RunBegun{first.name, 4712});
    const OpenedRun middle = open_run_in(second.path(), first.name);
    const OpenedRun last = open_run_in(third.path(), middle.name);
    EXPECT_EQ(read_file(lock_of(last)), "4711\n" + lock_of(first).string() + "\n");

    // The runs of before are swept, the folders closed; the worker lives on.
    write_file(first.staging / "DSC00001.JPG", sample_jpeg("1"));
    EXPECT_EQ(desk_.sweep(first).pictures.size(), 1U);
    desk_.sweep(middle);
    desk_.store().work(host::CloseFolder{folder_.path().string()});
    desk_.store().work(host::CloseFolder{second.path().string()});
    EXPECT_TRUE(is_held(lock_of(first)));
    Desk other(folder_.path());
    EXPECT_EQ(other.fail_to_open(folder_.path().string()).problem.code, Code::folder_in_use);

    ::close(inherited);
    desk_.sweep(last);
    for (const OpenedRun& run : {first, middle, last}) {
        EXPECT_FALSE(fs::exists(lock_of(run))) << run.name;
        EXPECT_FALSE(fs::exists(run.staging)) << run.name;
    }
    EXPECT_EQ(other.open().folder, folder_.path().string());
}

TEST_F(Runs, AWorkerThatIsMovedOnAndOnKeepsItsFirstFolderAndNoOtherOpen) {
    const OpenedRun first = desk_.open_run();
    const int inherited = ::dup(first.lock);
    desk_.store().work(host::RunBegun{first.name, 4711});
    const OpenedRun stranger = desk_.open_run();
    OpenedRun run = first;
    fs::path before = folder_.path();
    const auto move_to = [&](const std::string& name) {
        const fs::path folder = folder_.path() / name;
        open(folder);
        const OpenedRun next = open_run_in(folder, run.name);
        write_file(run.staging / "DSC00001.JPG", sample_jpeg(name));
        // What is no picture stays, and the run's staging folder with it.
        fs::create_directory(run.staging / "folder");
        EXPECT_EQ(desk_.sweep(run).pictures.size(), 1U);
        desk_.store().work(host::CloseFolder{before.string()});
        run = next;
        before = folder;
    };
    move_to("one");
    move_to("two");
    const int descriptors = open_descriptors();
    for (int move = 0; move < 200; ++move) {
        move_to(std::to_string(move));
    }
    EXPECT_EQ(open_descriptors(), descriptors);
    // It has not become a run of that worker.
    EXPECT_EQ(desk_
                  .ask<host::Examined>(host::Examine{desk_.next_ticket(), stranger.name,
                                                     (first.staging / "folder").string()})
                  .verdict,
              host::Verdict::outside);
    desk_.sweep(stranger);

    EXPECT_TRUE(is_held(lock_of(first)));
    Desk other(folder_.path());
    EXPECT_EQ(other.fail_to_open(folder_.path().string()).problem.code, Code::folder_in_use);
    // The worker is looked for in none of the folders that it has left.
    Desk next(folder_.path() / "one");
    const auto opened = next.open();
    EXPECT_EQ(text_of(opened.problems, Code::worker_hangs), "");
    EXPECT_EQ(names_of(opened.pictures, next.folder()), std::set<std::string>{"DSC00001.JPG"});

    ::close(inherited);
    desk_.sweep(run);
    EXPECT_EQ(other.open().folder, folder_.path().string());
}

}  // namespace
