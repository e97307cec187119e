// Folders: which are taken, and what is said of those that are not.

#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "host/process/command.h"
#include "host/values/utf8.h"
#include "tests/host/pictures/desk.h"

namespace {

using host::Code;

host::Problem not_taken(const fs::path& folder, const std::string& why) {
    return {Code::folder_not_taken,
            "The folder " + folder.string() + " is not taken: " + why + ".",
            {},
            {}};
}

host::Problem not_permitted(const fs::path& folder) {
    return {Code::folder_not_permitted,
            "The folder " + folder.string() + " cannot be written to: Permission denied.",
            {},
            {}};
}

host::Problem in_use(const fs::path& folder, const std::string& by) {
    return {Code::folder_in_use,
            "The folder " + folder.string() + " is used by another program" + by + ".",
            {},
            {}};
}

// Root may do everything: it becomes somebody else, for what is done or for what is asked.
class Nobody {
  public:
    enum class For { doing, asking };

    explicit Nobody(For what) {
        if (root_) {
            EXPECT_EQ(what == For::doing ? ::seteuid(nobody) : ::setreuid(nobody, 0), 0);
        }
    }
    ~Nobody() {
        if (root_) {
            EXPECT_EQ(::seteuid(0), 0);
            EXPECT_EQ(::setreuid(0, 0), 0);
        }
    }
    Nobody(const Nobody&) = delete;
    Nobody& operator=(const Nobody&) = delete;

  private:
    static constexpr uid_t nobody = 65534;
    const bool root_ = ::geteuid() == 0;
};

class Opening : public testing::Test {
  protected:
    fs::path at(const std::string& name) const {
        return folder_.path() / name;
    }

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
    EXPECT_EQ(opened.last_shot, 0U);
    struct stat facts {};
    ASSERT_EQ(::stat((folder_.path() / "real/.incoming").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700U);
}

TEST_F(Opening, ItsLastPartIsMadeAndNothingElse) {
    Desk desk(folder_.path() / "new//");
    const mode_t mask = ::umask(0);
    EXPECT_EQ(desk.open().folder, (folder_.path() / "new").string());
    ::umask(mask);
    EXPECT_EQ(fs::status(at("new")).permissions(), fs::perms(0777));
    EXPECT_EQ(desk.fail_to_open(at("a/b").string()).problem,
              not_taken(at("a/b"), "the folder that it is to lie in is not there"));
    EXPECT_FALSE(fs::exists(at("a")));
}

TEST_F(Opening, AFolderIsMadeInTheRootToo) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "to have a root of its own takes root";
    }
    const pid_t child = ::fork();
    if (child == 0) {
        const bool changed = ::chroot(folder_.path().c_str()) == 0 && ::chdir("/") == 0;
        ::_exit(changed && Desk("/new").open().folder == "/new" ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(fs::exists(at("new/.incoming/lock")));
}

TEST_F(Opening, ARelativePathIsTakenFromHere) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    for (const auto& [path, folder] : {std::pair("shots", "shots"), std::pair("s//", "s"),
                                       std::pair("s/t/", "s/t"), std::pair("./s/u", "s/u")}) {
        Desk desk(path);
        EXPECT_EQ(desk.open().folder, at(folder).string());
    }
    fs::create_directory(at("here"));
    fs::current_path(at("here"));
    EXPECT_EQ(Desk(".").open().folder, at("here").string());
    fs::current_path(before);
}

TEST_F(Opening, WhatIsNoFolderIsNotTaken) {
    write_file(folder_.path() / "file", "mine");
    fs::create_symlink("nowhere", folder_.path() / "dangling");
    ASSERT_EQ(::mkfifo((folder_.path() / "pipe").c_str(), 0600), 0);
    Desk desk(folder_.path());
    for (const auto& [name, why] :
         {std::pair("file", "it is not a folder"), std::pair("pipe", "it is not a folder"),
          std::pair("dangling", "File exists"), std::pair("file/below", "Not a directory")}) {
        EXPECT_EQ(desk.fail_to_open(at(name).string()).problem, not_taken(at(name), why));
    }
    EXPECT_EQ(desk.fail_to_open("").problem, not_taken("", "it has no name"));
    const std::string cut("/tmp\0/x", 7);
    EXPECT_EQ(desk.fail_to_open(cut).problem, not_taken(cut, "it has no name"));
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
    // The command that tells a worker of it, with a run of that length.
    const auto bytes = [](const fs::path& folder) {
        std::string error;
        const std::string run = "/.incoming/run-20240501-123456-0123456789abcdef";
        return host::write_command("SET_DOWNLOAD_DIR", {folder.string() + run}, error)
            .value_or(std::string(host::longest_command + 1, 'x'))
            .size();
    };
    // Each "%" takes three bytes on the line.
    fs::path deep = folder_.path();
    while (bytes(deep / "x") + 243 <= host::longest_command) {
        deep /= std::string(80, '%');
    }
    const std::size_t room = host::longest_command - bytes(deep / "x");
    fs::create_directories(deep);
    const fs::path longest = deep / std::string(1 + room, 'x');
    Desk desk(longest);
    const fs::path too_long = deep / std::string(2 + room, 'x');
    EXPECT_EQ(desk.fail_to_open(too_long.string()).problem,
              not_taken(host::escape_bytes(too_long.string()),
                        "its path is too long: the command has 4096 bytes, and the worker takes "
                        "at most 4095"));
    EXPECT_FALSE(fs::exists(too_long));
    EXPECT_EQ(desk.open().folder, longest.string());
    std::string error;
    EXPECT_TRUE(host::write_command("SET_DOWNLOAD_DIR", {desk.open_run().staging}, error)) << error;
}

TEST_F(Opening, AFolderThatForbidsItIsNotPermitted) {
    const fs::path closed = at("closed");
    fs::create_directory(closed);
    fs::permissions(folder_.path(), fs::perms::all);
    fs::permissions(closed, fs::perms(0555));
    Desk desk(closed);
    {
        const Nobody nobody(Nobody::For::doing);
        EXPECT_EQ(desk.fail_to_open(closed.string()).problem, not_permitted(closed));
        EXPECT_EQ(desk.fail_to_open((closed / "new").string()).problem,
                  not_permitted(closed / "new"));
    }
    EXPECT_TRUE(fs::is_empty(closed));
    fs::permissions(closed, fs::perms(0333));
    {
        const Nobody nobody(Nobody::For::doing);
        EXPECT_EQ(desk.fail_to_open(closed.string()).problem, not_permitted(closed)) << "to list";
    }
    fs::permissions(closed, fs::perms(0777));
    EXPECT_TRUE(fs::is_empty(closed));
    EXPECT_EQ(desk.open().folder, closed.string());

    // What is needed is there already, and a picture would find no place.
    const auto look = [&] {
        return desk.ask<host::FolderLooked>(
            host::LookAtFolder{desk.next_ticket(), closed.string()});
    };
    Desk next(closed);
    for (const int mode : {0555, 0666, 0444}) {
        fs::permissions(closed, fs::perms(mode));
        const Nobody nobody(Nobody::For::asking);
        EXPECT_EQ(next.fail_to_open(closed.string()).problem, not_permitted(closed)) << mode;
        EXPECT_FALSE(look().writable) << mode;
    }
    fs::permissions(closed, fs::perms(0555));
    EXPECT_TRUE(look().same);
    fs::permissions(closed, fs::perms(0777));
    const Nobody nobody(Nobody::For::asking);
    EXPECT_TRUE(look().writable);
}

TEST_F(Opening, AnIncomingThatIsNotOursIsNotTaken) {
    TemporaryFolder elsewhere;
    fs::create_symlink(elsewhere.path(), folder_.path() / ".incoming");
    Desk desk(folder_.path());
    const host::Problem not_ours = not_taken(folder_.path(), "its .incoming is not a folder");
    EXPECT_EQ(desk.fail_to_open(folder_.path().string()).problem, not_ours);
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
    fs::remove(at(".incoming"));
    write_file(at(".incoming"), "mine");
    EXPECT_EQ(desk.fail_to_open(folder_.path().string()).problem, not_ours);
    EXPECT_EQ(read_file(at(".incoming")), "mine");
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
            EXPECT_EQ(
                desk.fail_to_open(folder_.path().string()).problem,
                not_taken(folder_.path(), "its .incoming/" + std::string(name) + " is not a file"));
            EXPECT_TRUE(fs::exists(fs::symlink_status(planted)));
        }
    }
    EXPECT_EQ(read_file(elsewhere.path() / "mine"), "mine");
}

TEST_F(Opening, AFolderIsOneProgramsOnly) {
    Desk first(folder_.path());
    first.open();
    Desk second(folder_.path());
    const auto refused = [&] {
        return second.fail_to_open(folder_.path().string()).problem;
    };
    EXPECT_EQ(refused(), in_use(folder_.path(), ", process " + std::to_string(::getpid())));
    for (const auto& [note, by] : {std::pair("", ""), std::pair("1\n", ", process 1")}) {
        write_file(at(".incoming/lock"), note);
        EXPECT_EQ(refused(), in_use(folder_.path(), by));
    }
    first.store().work(host::CloseFolder{folder_.path().string()});
    EXPECT_EQ(second.open().folder, folder_.path().string());
}

TEST_F(Opening, AnotherProgramIsWaitedFor) {
    auto first = std::make_unique<Desk>(folder_.path());
    first->open();
    host::pictures::Options options = impatient();
    options.folder_in_use = std::chrono::seconds(10);
    std::vector<host::Problem> told;
    options.folder_waited_for = [&](host::Ticket ticket, const host::Problem& problem) {
        EXPECT_EQ(ticket, 1U);
        told.push_back(problem);
        first.reset();
    };
    Desk second(folder_.path(), options);
    EXPECT_EQ(second.open().folder, folder_.path().string());
    EXPECT_EQ(told, std::vector<host::Problem>{
                        in_use(folder_.path(), ", process " + std::to_string(::getpid()))});
    options.folder_in_use = {};
    Desk third(folder_.path(), options);
    third.fail_to_open(folder_.path().string());
    EXPECT_EQ(told.size(), 1U) << "it was not waited for";
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
    EXPECT_EQ(linked.last_shot, 41U);
    EXPECT_EQ(linked.room.has_value(), true);

    // The one that was opened last is the one that is listed.
    const TemporaryFolder second;
    desk.ask<host::FolderOpened>(host::OpenFolder{desk.next_ticket(), second.path().string()});
    EXPECT_TRUE(desk.store().list("", "", 9).empty());
    desk.open();
    EXPECT_EQ(desk.store().list("", "", 9).size(), 1U);
}

TEST_F(Opening, AFolderThatWasMovedIsOpenedUnderItsNewPath) {
    const fs::path before = at("before");
    const fs::path now = at("now");
    Desk desk(before);
    desk.open();
    const OpenedRun run = desk.open_run();
    fs::rename(before, now);
    const auto open = [&](const fs::path& folder) {
        return desk.ask<host::FolderOpened>(host::OpenFolder{desk.next_ticket(), folder.string()})
            .folder;
    };
    EXPECT_EQ(open(now), now.string());
    EXPECT_TRUE(desk.store().is_open(now.string()));
    EXPECT_FALSE(desk.store().is_open(before.string()));
    // Another stands where it was.
    fs::rename(now, before);
    fs::create_directory(now);
    EXPECT_EQ(open(before), before.string());
    EXPECT_EQ(open(now), now.string());
    EXPECT_TRUE(desk.store().is_open(before.string()));

    // It is closed, and its worker lives.
    desk.store().work(host::CloseFolder{before.string()});
    EXPECT_FALSE(desk.store().is_open(before.string()));
    EXPECT_TRUE(desk.store().is_open(now.string()));
    EXPECT_EQ(open(before), before.string());
    EXPECT_TRUE(desk.store().is_open(before.string()));
    desk.sweep(run);
}

TEST_F(Opening, ADamagedPictureThatWasLeftBehindIsToldOfOnceAStart) {
    {
        Desk desk(folder_.path());
        desk.open();
        write_file(desk.open_run().staging / "DSC00001.JPG", sample_jpeg().substr(0, 80));
    }
    for (const char* start : {"brought in", "not told yet"}) {
        const auto opened = Desk(folder_.path()).open();
        EXPECT_EQ(names_of(opened.pictures, folder_.path()), std::set<std::string>{"DSC00001.JPG"})
            << start;
        EXPECT_EQ(
            opened.problems,
            (std::vector<host::Problem>{{Code::picture_damaged,
                                         "A picture is damaged: " + at("DSC00001.JPG").string(),
                                         {},
                                         {}}}))
            << start;
    }
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
    fs::remove(folder);
    write_file(folder, "");
    EXPECT_FALSE(look().there) << "a file";
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
    EXPECT_EQ(read_file(run.staging.string() + ".lock"), "\n" + left.staging.string() + ".lock\n")
        << "it has not begun";
    fs::remove(left.staging);
    EXPECT_TRUE(can_be_shot_into()) << "the worker was moved from there";
    const TemporaryFolder second;
    desk.ask<host::FolderOpened>(host::OpenFolder{desk.next_ticket(), second.path().string()});
    fs::remove(
        desk.ask<host::RunOpened>(host::OpenRun{desk.next_ticket(), second.path().string(), ""})
            .staging);
    EXPECT_TRUE(can_be_shot_into()) << "it was another folder's";
    for (const fs::path& folder : {run.staging, at(".incoming")}) {
        fs::rename(folder, at("aside"));
        fs::create_directory(folder);
        EXPECT_FALSE(can_be_shot_into()) << "another one in its place";
        fs::remove(folder);
        fs::rename(at("aside"), folder);
        EXPECT_TRUE(can_be_shot_into());
    }
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
