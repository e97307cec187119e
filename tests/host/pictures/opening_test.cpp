// Folders: which are taken, and what is said of those that are not.

#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "tests/host/pictures/desk.h"

namespace {

using host::Code;

class Opening : public testing::Test {
  protected:
    TemporaryFolder folder_;
};

TEST_F(Opening, AFolderIsTakenUnderItsOwnPath) {
    fs::create_directory(folder_.path() / "real");
    fs::create_symlink("real", folder_.path() / "link");
    Desk desk(folder_.path() / "link/../link/");
    const auto opened = desk.open();
    EXPECT_EQ(opened.folder, (folder_.path() / "real").string());
    EXPECT_TRUE(opened.pictures.empty());
    EXPECT_TRUE(opened.problems.empty());
    EXPECT_GT(opened.room.value_or(0), 0U);
    struct stat facts {};
    ASSERT_EQ(::stat((folder_.path() / "real/.incoming").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700U);
}

TEST_F(Opening, ItsLastPartIsMadeAndNothingElse) {
    Desk desk(folder_.path() / "new//");
    EXPECT_EQ(desk.open().folder, (folder_.path() / "new").string());
    const auto refused = desk.fail_to_open((folder_.path() / "a/b").string());
    EXPECT_EQ(refused.problem.code, Code::folder_not_taken);
    EXPECT_FALSE(fs::exists(folder_.path() / "a"));
}

TEST_F(Opening, ARelativePathIsTakenFromHere) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    Desk desk("shots");
    EXPECT_EQ(desk.open().folder, (folder_.path() / "shots").string());
    fs::current_path(before);
}

TEST_F(Opening, WhatIsNoFolderIsNotTaken) {
    write_file(folder_.path() / "file", "mine");
    fs::create_symlink("nowhere", folder_.path() / "dangling");
    ASSERT_EQ(::mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);
    Desk desk(folder_.path());
    for (const char* name : {"file", "dangling", "pipe", "file/below"}) {
        EXPECT_EQ(desk.fail_to_open((folder_.path() / name).string()).problem.code,
                  Code::folder_not_taken)
            << name;
    }
    EXPECT_EQ(desk.fail_to_open("").problem.code, Code::folder_not_taken);
    EXPECT_EQ(read_file(folder_.path() / "file"), "mine");
}

TEST_F(Opening, APathThatIsNotUtf8IsNotTakenAndNotMade) {
    Desk desk(folder_.path());
    const auto refused = desk.fail_to_open((folder_.path() / "\xFF").string());
    EXPECT_EQ(refused.problem.code, Code::folder_not_taken);
    EXPECT_EQ(refused.problem.text, "The folder " + folder_.path().string() +
                                        "/%FF is not taken: its path is not UTF-8.");
    EXPECT_FALSE(fs::exists(folder_.path() / "\xFF"));
}

TEST_F(Opening, APathThatIsTooLongForALineIsNotTaken) {
    // Each "%" takes three bytes on the line.
    fs::path deep = folder_.path();
    for (int level = 0; level < 6; ++level) {
        deep /= std::string(240, '%');
    }
    fs::create_directories(deep);
    Desk desk(deep);
    const auto refused = desk.fail_to_open(deep.string());
    EXPECT_EQ(refused.problem.code, Code::folder_not_taken);
    EXPECT_NE(refused.problem.text.find("too long"), std::string::npos) << refused.problem.text;
    EXPECT_FALSE(fs::exists(deep / ".incoming"));
    Desk shorter(deep.parent_path().parent_path());
    EXPECT_EQ(shorter.open().folder, shorter.folder().string());
}

TEST_F(Opening, AFolderThatForbidsItIsNotPermitted) {
    constexpr uid_t nobody = 65534;
    const uid_t before = ::geteuid();
    const fs::path closed = folder_.path() / "closed";
    fs::create_directory(closed);
    fs::permissions(closed, fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read |
                                fs::perms::others_exec);
    fs::permissions(folder_.path(), fs::perms::all);
    // Root may write everywhere.
    ASSERT_TRUE(before != 0 || ::seteuid(nobody) == 0);
    Desk desk(closed);
    const auto refused = desk.fail_to_open(closed.string());
    EXPECT_EQ(refused.problem.code, Code::folder_not_permitted);
    EXPECT_EQ(refused.problem.text,
              "The folder " + closed.string() + " cannot be written to: Permission denied.");
    EXPECT_EQ(desk.fail_to_open((closed / "new").string()).problem.code,
              Code::folder_not_permitted);
    ASSERT_EQ(::seteuid(before), 0);
    fs::permissions(closed, fs::perms::owner_all);
    EXPECT_TRUE(fs::is_empty(closed));
}

TEST_F(Opening, AnIncomingThatIsNotOursIsNotTaken) {
    TemporaryFolder elsewhere;
    fs::create_symlink(elsewhere.path(), folder_.path() / ".incoming");
    Desk desk(folder_.path());
    EXPECT_EQ(desk.fail_to_open(folder_.path().string()).problem.code, Code::folder_not_taken);
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
}

TEST_F(Opening, LinksAndPipesAreNoLockAndNoLedger) {
    TemporaryFolder elsewhere;
    write_file(elsewhere.path() / "mine", "mine");
    for (const char* name : {"lock", "ledger"}) {
        for (const bool pipe : {false, true}) {
            fs::remove_all(folder_.path() / ".incoming");
            fs::create_directory(folder_.path() / ".incoming");
            const fs::path planted = folder_.path() / ".incoming" / name;
            if (pipe) {
                ASSERT_EQ(::mkfifo(planted.c_str(), 0600), 0);
            } else {
                fs::create_symlink(elsewhere.path() / "mine", planted);
            }
            Desk desk(folder_.path());
            const auto refused = desk.fail_to_open(folder_.path().string());
            EXPECT_EQ(refused.problem.code, Code::folder_not_taken) << name;
            EXPECT_NE(refused.problem.text.find(name), std::string::npos);
            EXPECT_TRUE(fs::exists(fs::symlink_status(planted)));
        }
    }
    EXPECT_EQ(read_file(elsewhere.path() / "mine"), "mine");
}

TEST_F(Opening, AFolderIsOneProgramsOnly) {
    Desk first(folder_.path());
    first.open();
    Desk second(folder_.path());
    const auto refused = second.fail_to_open(folder_.path().string());
    EXPECT_EQ(refused.problem.code, Code::folder_in_use);
    EXPECT_EQ(refused.problem.text, "The folder " + folder_.path().string() +
                                        " is used by another program, process " +
                                        std::to_string(::getpid()) + ".");
    first.store().work(host::CloseFolder{folder_.path().string()});
    EXPECT_EQ(second.open().folder, folder_.path().string());
}

TEST_F(Opening, AnotherProgramIsWaitedFor) {
    auto first = std::make_unique<Desk>(folder_.path());
    first->open();
    host::pictures::Options options = impatient();
    options.folder_in_use = std::chrono::seconds(10);
    std::vector<host::Problem> told;
    options.folder_waited_for = [&](host::Ticket, const host::Problem& problem) {
        told.push_back(problem);
        first.reset();
    };
    Desk second(folder_.path(), options);
    EXPECT_EQ(second.open().folder, folder_.path().string());
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].code, Code::folder_in_use);
}

TEST_F(Opening, AProgramThatEndsWaitsForNobody) {
    Desk first(folder_.path());
    first.open();
    host::pictures::Options options = impatient();
    options.folder_in_use = std::chrono::hours(1);
    Desk second(folder_.path(), options);
    std::thread ends([&] { second.store().hurry(); });
    EXPECT_EQ(second.fail_to_open(folder_.path().string()).problem.code, Code::folder_in_use);
    ends.join();
}

TEST_F(Opening, AFolderThatIsOpenIsOpenedAgainAtOnce) {
    Desk desk(folder_.path());
    desk.open();
    desk.bring(desk.open_run(), "DSC00001.JPG", sample_jpeg(), {0, 41, "", "", "", {}});
    const auto again = desk.open();
    EXPECT_EQ(again.folder, folder_.path().string());
    EXPECT_TRUE(again.pictures.empty());
    EXPECT_EQ(again.last_shot, 41U);
    fs::create_symlink(folder_.path(), folder_.path() / "link");
    const auto linked = desk.ask<host::FolderOpened>(
        host::OpenFolder{desk.next_ticket(), (folder_.path() / "link").string()});
    EXPECT_EQ(linked.folder, folder_.path().string());
}

TEST_F(Opening, AClosedFolderStaysOursWhileItsWorkerLives) {
    Desk desk(folder_.path());
    desk.open();
    const OpenedRun run = desk.open_run();
    desk.store().work(host::CloseFolder{folder_.path().string()});
    Desk other(folder_.path());
    EXPECT_EQ(other.fail_to_open(folder_.path().string()).problem.code, Code::folder_in_use);
    desk.sweep(run);
    EXPECT_EQ(other.open().folder, folder_.path().string());
}

TEST_F(Opening, ALookSaysWhetherItIsStillThere) {
    const fs::path folder = folder_.path() / "shots";
    Desk desk(folder);
    desk.open();
    const auto look = [&] {
        return desk.ask<host::FolderLooked>(
            host::LookAtFolder{desk.next_ticket(), folder.string()});
    };
    EXPECT_TRUE(look().there);
    EXPECT_TRUE(look().same);
    EXPECT_TRUE(look().writable);
    EXPECT_GT(look().room, 0U);
    fs::rename(folder, folder_.path() / "moved");
    EXPECT_FALSE(look().there);
    fs::create_directory(folder);
    EXPECT_TRUE(look().there);
    EXPECT_FALSE(look().same);
    EXPECT_FALSE(look().writable);
}

TEST_F(Opening, AFolderInAnothersPlaceIsOpenedAnew) {
    const fs::path folder = folder_.path() / "shots";
    Desk desk(folder);
    desk.open();
    const OpenedRun before = desk.open_run();
    fs::rename(folder, folder_.path() / "moved");
    EXPECT_EQ(desk.open().folder, folder.string());
    const OpenedRun now = desk.open_run();
    EXPECT_EQ(desk.bring(now, "DSC00001.JPG", sample_jpeg()).path,
              (folder / "DSC00001.JPG").string());
    desk.sweep(before);
}

TEST_F(Opening, AStagingFolderThatIsDeletedIsSeenAndMadeAnewWhenItIsAskedFor) {
    Desk desk(folder_.path());
    desk.open();
    const OpenedRun left = desk.open_run();
    OpenedRun run = desk.open_run(left.name);
    const auto can_be_shot_into = [&] {
        const auto looked = desk.ask<host::FolderLooked>(
            host::LookAtFolder{desk.next_ticket(), folder_.path().string()});
        EXPECT_TRUE(looked.there);
        return looked.same;
    };
    fs::remove(left.staging);
    EXPECT_TRUE(can_be_shot_into()) << "the worker was moved from there";
    fs::remove(run.staging);
    EXPECT_FALSE(can_be_shot_into());
    run = desk.open_run(run.name);
    EXPECT_TRUE(can_be_shot_into());
    fs::remove_all(folder_.path() / ".incoming");
    EXPECT_FALSE(can_be_shot_into());
    EXPECT_EQ(desk.open().folder, folder_.path().string());
    run = desk.open_run(run.name);
    EXPECT_TRUE(can_be_shot_into());
    EXPECT_EQ(desk.bring(run, "DSC00001.JPG", sample_jpeg()).path, folder_.path() / "DSC00001.JPG");
}

TEST_F(Opening, ALookNeverMakesAFolder) {
    const fs::path folder = folder_.path() / "shots";
    Desk desk(folder);
    desk.open();
    fs::remove_all(folder);
    desk.ask<host::FolderLooked>(host::LookAtFolder{1, folder.string()});
    EXPECT_EQ(desk.ask<host::RunNotOpened>(host::OpenRun{2, folder.string(), ""}).problem.code,
              Code::folder_gone);
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(Opening, OnlyWhatWasOpenedIsOpen) {
    Desk desk(folder_.path());
    EXPECT_FALSE(desk.store().is_open(""));
    const auto looked = desk.ask<host::FolderLooked>(
        host::LookAtFolder{desk.next_ticket(), folder_.path().string()});
    EXPECT_TRUE(looked.there);
    EXPECT_FALSE(looked.same);
    write_file(folder_.path() / "file", "");
    EXPECT_FALSE(desk.ask<host::FolderLooked>(
                         host::LookAtFolder{desk.next_ticket(), (folder_.path() / "file").string()})
                     .there);
    desk.open();
    EXPECT_TRUE(desk.store().is_open(""));
    EXPECT_TRUE(desk.store().is_open(folder_.path().string()));
    EXPECT_FALSE(desk.store().is_open("/nowhere"));
}

}  // namespace
