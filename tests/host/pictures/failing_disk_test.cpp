// Any call that fails, once or for ever: nothing is lost, and what is not in its place is named.
// And a file that changes between two calls.

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <set>
#include <unistd.h>
#include <utility>

#include "host/pictures/whole/window.h"
#include "tests/host/pictures/afternoon.h"
#include "tests/host/pictures/disk_calls.h"

namespace {

// By its path, or together with all that its folder holds.
bool is_named(const std::vector<host::Problem>& problems, const fs::path& staging,
              const std::string& name) {
    return std::any_of(problems.begin(), problems.end(), [&](const host::Problem& problem) {
        return problem.text.find(staging / name) != std::string::npos ||
               problem.text.ends_with(" in " + staging.string());
    });
}

struct Failure {
    int error;
    bool for_ever;
    bool no_exclusive_rename;
};

class FailingDisk : public testing::TestWithParam<Failure> {
  protected:
    ~FailingDisk() override {
        disk_calls::before = {};
        disk_calls::no_exclusive_rename = false;
    }
};

TEST_P(FailingDisk, LosesNothingAtAnyStep) {
    const Failure& failure = GetParam();
    int step = 0;
    for (bool failed = true; failed; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const TemporaryFolder folder(quick_disk());
        const Afternoon afternoon(folder.path());
        disk_calls::no_exclusive_rename = failure.no_exclusive_rename;
        int calls = 0;
        std::string failing;
        disk_calls::before = [&](std::string_view call) {
            const int here = calls++;
            if (here == step || (failure.for_ever && here > step)) {
                failing = call;
                return failure.error;
            }
            return 0;
        };
        afternoon.shoot();
        disk_calls::before = {};
        failed = !failing.empty();
        SCOPED_TRACE(failing);
        if (fs::exists(afternoon.folder() / ".incoming")) {
            afternoon.check_nothing_lost(afternoon.problems);
        }
        // The disk is well again.
        afternoon.check();
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(step, 60);
}

TEST_P(FailingDisk, NamesWhatAStartLeavesAtAnyStep) {
    const Failure& failure = GetParam();
    const std::map<std::string, std::string> files{{"A.JPG", sample_jpeg("A")},
                                                   {"B.JPG", sample_jpeg("B")}};
    int step = 0;
    for (bool failed = true; failed; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const TemporaryFolder folder(quick_disk());
        fs::path staging;
        {
            Desk desk(folder.path());
            desk.open();
            staging = desk.open_run().staging;
            for (const auto& [name, content] : files) {
                write_file(staging / name, content);
            }
        }
        disk_calls::no_exclusive_rename = failure.no_exclusive_rename;
        int calls = 0;
        disk_calls::before = [&](std::string_view) {
            const int here = calls++;
            return here == step || (failure.for_ever && here > step) ? failure.error : 0;
        };
        std::optional<host::FileAnswer> answer;
        {
            Desk desk(folder.path());
            answer = desk.store().work(host::OpenFolder{1, folder.path().string()});
        }
        disk_calls::before = {};
        failed = calls > step;
        if (const auto* const opened = std::get_if<host::FolderOpened>(&*answer)) {
            for (const auto& [name, content] : files) {
                EXPECT_TRUE(!fs::exists(staging / name) ||
                            is_named(opened->problems, staging, name))
                    << name;
            }
        }
        // The disk is well again.
        Desk desk(folder.path());
        desk.open();
        EXPECT_EQ(files_in(folder.path()), files);
        EXPECT_FALSE(fs::exists(staging));
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(step, 20);
}

TEST(BusyDisk, AFileThatGrowsWhileItIsLookedAtIsNotWhole) {
    const TemporaryFolder folder(quick_disk());
    Desk desk(folder.path());
    desk.open();
    const OpenedRun run = desk.open_run();
    write_file(run.staging / "DSC00001.JPG", sample_jpeg("1"));
    disk_calls::before_reading = [&] {
        std::ofstream(run.staging / "DSC00001.JPG", std::ios::app) << "more";
        return 0;
    };
    const auto found = desk.examine(run, "DSC00001.JPG");
    disk_calls::before_reading = {};
    EXPECT_FALSE(found.whole);
    EXPECT_EQ(found.why, "it is still being written");
}

INSTANTIATE_TEST_SUITE_P(Once, FailingDisk,
                         testing::Values(Failure{EIO, false, false}, Failure{ENOSPC, false, false},
                                         Failure{EIO, false, true}));
INSTANTIATE_TEST_SUITE_P(ForEver, FailingDisk,
                         testing::Values(Failure{EIO, true, false}, Failure{EROFS, true, false},
                                         Failure{ENOSPC, true, true}));

// What no list of the folder shows: a disk may take names for the same that are not the same here.
class DiskThatKnowsMoreNames : public OpenDesk {
  protected:
    ~DiskThatKnowsMoreNames() override {
        disk_calls::before = disk_calls::before_looking = {};
    }
    // So many names are there already.
    void refuse(int names) {
        disk_calls::before = [names](std::string_view call) mutable {
            return call == "renameat2" && names-- > 0 ? EEXIST : 0;
        };
    }
    static void refuse_moves() {
        disk_calls::before = [](std::string_view call) {
            return call == "renameat2" ? EIO : 0;
        };
    }
    host::Problem fail_to_place(const std::string& name, const host::Place& how = {}) {
        host::Place work = how;
        work.ticket = desk_->examine(run_, name).ticket;
        return desk_->ask<host::NotPlaced>(work).problem;
    }
};

using DiskThatFailsOnce = DiskThatKnowsMoreNames;

TEST_F(DiskThatFailsOnce, SaysWhatItKeepsAndWhere) {
    const fs::path staging = run_.staging;
    write_file(staging / "A.JPG", sample_jpeg("A"));
    desk_ = nullptr;
    std::multiset<std::string> said;
    int step = 0;
    for (bool failed = true; failed; ++step) {
        failed = false;
        disk_calls::before = [&, left = step](std::string_view call) mutable {
            const bool now = (call == "openat" || call == "renameat2") && left-- == 0;
            failed = failed || now;
            return now ? EIO : 0;
        };
        Desk desk(folder_.path());
        const auto answer = desk.store().work(host::OpenFolder{1, folder_.path().string()});
        disk_calls::before = {};
        if (const auto* const opened = std::get_if<host::FolderOpened>(&*answer)) {
            for (const host::Problem& problem : opened->problems) {
                said.insert(problem.text);
            }
        } else {
            said.insert(std::get<host::FolderNotOpened>(*answer).problem.text);
        }
        // For the next one.
        for (const auto& [name, content] : files_in(folder_.path())) {
            fs::create_directory(staging);
            fs::rename(folder_.path() / name, staging / "A.JPG");
        }
        fs::remove(folder_.path() / ".incoming/ledger");
    }
    const std::string folder = folder_.path().string();
    const std::string error = "Input/output error";
    EXPECT_EQ(said.count("What a worker of before has brought cannot be looked at: " + error +
                         ". It stays in " + staging.string()),
              2U)
        << "its lock, and its folder";
    EXPECT_EQ((std::set<std::string>{said.begin(), said.end()}),
              (std::set<std::string>{"A picture is damaged: " + folder + "/A.JPG",
                                     "The folder " + folder + " is not taken: " + error + ".",
                                     "What a worker of before has brought cannot be looked at: " +
                                         error + ". It stays in " + staging.string(),
                                     "What has been staged cannot be looked at: " + error +
                                         ". It is now in " + staging.string(),
                                     "A picture could not be brought to its place: " + error +
                                         ". It is now " + (staging / "A.JPG").string(),
                                     "The disk does not confirm a picture: " + error +
                                         ". It is now " + folder + "/A.JPG"}));
}

TEST_F(DiskThatFailsOnce, GivesTheReasonWhereALeftRunCannotBeLookedAt) {
    std::string said;
    for (int step = 0; step < 12; ++step) {
        const TemporaryFolder folder;
        fs::create_directories(folder.path() / ".incoming/run-left");
        write_file(folder.path() / ".incoming/run-left/A.JPG", sample_jpeg("A"));
        disk_calls::before_looking = [left = step](std::string_view call) mutable {
            return call == "fstat" && left-- == 0 ? EIO : 0;
        };
        Desk desk(folder.path());
        const auto answer = desk.store().work(host::OpenFolder{1, folder.path().string()});
        if (const auto* const opened = std::get_if<host::FolderOpened>(&*answer)) {
            for (const host::Problem& problem : opened->problems) {
                said += problem.text + "\n";
            }
        }
    }
    EXPECT_NE(said.find("has brought cannot be looked at: Input/output error. It stays in "),
              std::string::npos)
        << said;
    EXPECT_EQ(said.find("Success"), std::string::npos) << said;
}

TEST_F(DiskThatFailsOnce, GetsNoRunAndSaysWhyAtAnyStep) {
    const std::string folder = folder_.path().string();
    for (const auto& [error, code, why] :
         {std::tuple{EIO, host::Code::folder_not_taken, "Input/output error"},
          std::tuple{EACCES, host::Code::folder_not_permitted, "Permission denied"},
          std::tuple{EPERM, host::Code::folder_not_permitted, "Operation not permitted"},
          std::tuple{EROFS, host::Code::folder_not_permitted, "Read-only file system"}}) {
        // Its lock, what the lock says in two calls, its folder, and opening that.
        for (int step = 0; step < 5; ++step) {
            disk_calls::before = [error = error, left = step](std::string_view) mutable {
                return left-- == 0 ? error : 0;
            };
            EXPECT_EQ(
                desk_->ask<host::RunNotOpened>(host::OpenRun{9, folder, run_.name}).problem,
                (host::Problem{code,
                               "No place for pictures can be made in " + folder + ": " + why + ".",
                               {},
                               {}}))
                << step;
            int parts = 0;
            for (const auto& entry : fs::directory_iterator(folder_.path() / ".incoming")) {
                parts += entry.path().filename().string().starts_with("run-") ? 1 : 0;
            }
            EXPECT_EQ(parts % 2, 0) << "no lock without its folder, no folder without its lock";
        }
    }
}

TEST_F(DiskThatFailsOnce, GetsNoRunThatCannotBeLookedAt) {
    // Its lock, and its folder.
    for (int step = 0; step < 2; ++step) {
        disk_calls::before_looking = [left = step](std::string_view call) mutable {
            return call == "fstat" && left-- == 0 ? EIO : 0;
        };
        const std::string folder = folder_.path().string();
        EXPECT_EQ(desk_->ask<host::RunNotOpened>(host::OpenRun{9, folder, run_.name}).problem.text,
                  "No place for pictures can be made in " + folder + ": Input/output error.");
    }
}

TEST_F(DiskThatFailsOnce, GetsTheOthersWhenAFileGoesWhileTheyAreListed) {
    write_file(run_.staging / "A.JPG", sample_jpeg("A"));
    write_file(run_.staging / "B.JPG", sample_jpeg("B"));
    disk_calls::before_looking = [left = 0](std::string_view call) mutable {
        return call == "fstatat" && left-- == 0 ? ENOENT : 0;
    };
    EXPECT_EQ(desk_->sweep(run_, false).pictures.size(), 1U);
    EXPECT_EQ(desk_->sweep(run_, false).pictures.size(), 1U);
}

TEST_F(DiskThatFailsOnce, SaysOfAFileThatItCannotBeRead) {
    write_file(run_.staging / "A.JPG", sample_jpeg("A"));
    disk_calls::before = [](std::string_view call) {
        return call == "openat" ? EIO : 0;
    };
    const auto found = desk_->examine(run_, "A.JPG");
    EXPECT_EQ(found.verdict, host::Verdict::there);
    EXPECT_EQ(found.bytes, sample_jpeg("A").size());
    EXPECT_FALSE(found.whole);
    EXPECT_EQ(found.why, "it cannot be read: Input/output error");

    disk_calls::before = {};
    // Of the file that is opened, and of what is open.
    for (int step = 0; step < 2; ++step) {
        const std::string name = "LOOK" + std::to_string(step) + ".JPG";
        write_file(run_.staging / name, sample_jpeg("L"));
        disk_calls::before_looking = [left = step](std::string_view call) mutable {
            return call == "fstat" && left-- == 0 ? EIO : 0;
        };
        EXPECT_EQ(desk_->examine(run_, name).why, "it cannot be read: Input/output error") << step;
    }
    disk_calls::before_looking = {};

    write_file(run_.staging / "B.JPG", sample_jpeg("B"));
    disk_calls::before = [&](std::string_view) {
        fs::remove(run_.staging / "B.JPG");
        return 0;
    };
    EXPECT_EQ(desk_->examine(run_, "B.JPG").verdict, host::Verdict::not_there);
}

TEST_F(DiskThatFailsOnce, SaysOnceThatAPictureThatWasCutCannotBeBrought) {
    const host::Place how{0, 41, "", "below/{camera}", "p", {}};
    write_file(run_.staging / "A.JPG", sample_jpeg("A"));
    refuse_moves();
    fail_to_place("A.JPG", how);
    const std::vector<host::Problem> problems{
        {host::Code::picture_not_placed,
         "A picture could not be brought to its place: Input/output error. It is now " +
             (run_.staging / "A.JPG").string(),
         {},
         41}};
    EXPECT_EQ(restart().problems, problems);
    disk_calls::before = {};
    EXPECT_EQ(names_of(restart().pictures, folder_.path()), std::set<std::string>{"below/A.JPG"});
}

TEST_F(DiskThatFailsOnce, GetsAPictureLaterUnderItsId) {
    host::Place how{0, 7, "a tag", "below/{shot:3}", "p", {}};
    write_file(run_.staging / "A.JPG", sample_jpeg("A"));
    refuse_moves();
    fail_to_place("A.JPG", how);
    disk_calls::before = {};
    // Some disks give a file another number now and then.
    fs::copy_file(run_.staging / "A.JPG", run_.staging / "B.JPG");
    fs::last_write_time(run_.staging / "B.JPG", fs::last_write_time(run_.staging / "A.JPG"));
    fs::rename(run_.staging / "B.JPG", run_.staging / "A.JPG");
    const host::Picture first = desk_->place(desk_->examine(run_, "A.JPG"), how);
    // The next one of its name, its size and its time is another.
    how.pair = "q";
    const host::Picture second = desk_->bring(run_, "A.JPG", sample_jpeg("B"), how);
    EXPECT_NE(first.id, second.id);
    const auto opened = restart();
    EXPECT_EQ(opened.pictures, (std::vector<host::Picture>{first, second}));
    EXPECT_TRUE(opened.problems.empty());
}

TEST_F(DiskThatFailsOnce, GetsAPictureThatHasGrownMeanwhileOnce) {
    const std::string content = sample_jpeg("A");
    for (const bool swept : {false, true}) {
        const host::Place how{0, 7, "a tag", "below/{shot:3}", swept ? "p" : "q", {}};
        run_ = desk_->open_run();
        write_file(run_.staging / "A.JPG", content.substr(0, 50));
        refuse_moves();
        fail_to_place("A.JPG", how);
        disk_calls::before = {};
        std::ofstream(run_.staging / "A.JPG", std::ios::app | std::ios::binary)
            << content.substr(50);
        const host::Picture picture = swept ? desk_->sweep(run_).pictures.at(0)
                                            : desk_->place(desk_->examine(run_, "A.JPG"), how);
        EXPECT_EQ(picture.shot, swept ? std::nullopt : how.shot) << "in doubt, when swept";
        EXPECT_EQ(picture.bytes, content.size());
        EXPECT_TRUE(picture.whole);
        desk_->tell(picture);
        const auto opened = restart();
        EXPECT_TRUE(opened.pictures.empty()) << "it has been told, under its id";
        EXPECT_TRUE(opened.problems.empty());
    }
}

TEST_F(DiskThatFailsOnce, GetsAnotherPictureUnderAnIdOfItsOwn) {
    const host::Place how{0, 7, "a tag", "below/{shot:3}", "p", {}};
    for (const bool swept : {false, true}) {
        run_ = desk_->open_run();
        write_file(run_.staging / "A.JPG", sample_jpeg("A"));
        refuse_moves();
        fail_to_place("A.JPG", how);
        disk_calls::before = {};
        write_file(run_.staging / "B.JPG", sample_jpeg("another"));
        fs::rename(run_.staging / "B.JPG", run_.staging / "A.JPG");
        if (swept) {
            EXPECT_EQ(desk_->sweep(run_).pictures.at(0).shot, std::nullopt);
        } else {
            desk_->place(desk_->examine(run_, "A.JPG"), how);
        }
        EXPECT_EQ(restart().problems.size(), 1U) << "the first one is nowhere";
    }
}

TEST_F(DiskThatFailsOnce, GetsASweptPictureToWhereItWasToGo) {
    const host::Place how{0, 7, "a tag", "below/{shot:3}", "p", std::chrono::milliseconds(900)};
    write_file(run_.staging / "A.JPG", sample_jpeg("A"));
    refuse_moves();
    fail_to_place("A.JPG", how);
    disk_calls::before = {};
    const auto swept = desk_->sweep(run_);
    ASSERT_EQ(swept.pictures.size(), 1U);
    const host::Picture& picture = swept.pictures[0];
    EXPECT_EQ(picture,
              (host::Picture{picture.id, 7, "a tag", "p", host::Kind::developed, host::Format::jpeg,
                             folder_.path() / "below/007.JPG", "A.JPG", sample_jpeg("A").size(),
                             true, picture.at, std::chrono::milliseconds(900), false}));
}

class DiskThatFailsAtAnyStep : public DiskThatKnowsMoreNames,
                               public testing::WithParamInterface<bool> {
  protected:
    ~DiskThatFailsAtAnyStep() override {
        disk_calls::no_exclusive_rename = false;
    }
};

TEST_P(DiskThatFailsAtAnyStep, SaysWhereAPictureIsNow) {
    enum Outcome { not_moved, not_confirmed, placed };
    disk_calls::no_exclusive_rename = GetParam();
    // From now on the disk is known to have no such rename.
    desk_->bring(run_, "first.JPG", sample_jpeg("1"));
    std::map<std::string, std::string> contents;
    std::vector<Outcome> outcomes;
    for (bool failed = true; failed && !HasFailure();) {
        const int step = static_cast<int>(outcomes.size());
        const std::string name = "DSC" + std::to_string(1000 + step) + ".JPG";
        const fs::path place = folder_.path() / std::to_string(step) / "below" / name;
        contents[name] = sample_jpeg(name);
        write_file(run_.staging / name, contents[name]);
        const host::Ticket ticket = desk_->examine(run_, name).ticket;
        failed = false;
        disk_calls::before = [&, left = step](std::string_view call) mutable {
            EXPECT_FALSE(GetParam() && call == "renameat2");
            failed = failed || left == 0;
            return left-- == 0 ? EIO : 0;
        };
        const auto answer = desk_->store().work(
            host::Place{ticket, 7, "", std::to_string(step) + "/below/{camera}", name, {}});
        disk_calls::before = {};
        const bool moved = fs::exists(place);
        EXPECT_NE(moved, fs::exists(run_.staging / name));
        if (const auto* const refused = std::get_if<host::NotPlaced>(&*answer)) {
            EXPECT_EQ(refused->problem,
                      (host::Problem{
                          host::Code::picture_not_placed,
                          (moved ? "The disk does not confirm a picture: Input/output error. It "
                                   "is now " +
                                       place.string()
                                 : "A picture could not be brought to its place: Input/output "
                                   "error. It is now " +
                                       (run_.staging / name).string()),
                          {},
                          7}));
        }
        outcomes.push_back(std::holds_alternative<host::Placed>(*answer) ? placed
                           : moved                                       ? not_confirmed
                                                                         : not_moved);
    }
    EXPECT_TRUE(std::is_sorted(outcomes.begin(), outcomes.end()));
    EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), not_confirmed), 3)
        << "it is opened and synced, and its folder is";
    EXPECT_GT(std::count(outcomes.begin(), outcomes.end(), not_moved), 10);
    EXPECT_TRUE(desk_->sweep(run_).problems.empty());
    for (const auto& [path, content] : files_in(folder_.path())) {
        contents.erase(fs::path(path).filename());
    }
    EXPECT_TRUE(contents.empty()) << "each under its name";
}

INSTANTIATE_TEST_SUITE_P(ByRename, DiskThatFailsAtAnyStep, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ByReservation, DiskThatFailsAtAnyStep, testing::Values(true));

TEST_F(DiskThatKnowsMoreNames, GetsTheNextOneEachTime) {
    refuse(3);
    EXPECT_EQ(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1")).path,
              folder_.path() / "DSC00001-4.JPG");
    refuse(99);
    EXPECT_EQ(desk_->bring(run_, "DSC00002.JPG", sample_jpeg("2")).path,
              folder_.path() / "DSC00002-100.JPG");
    write_file(run_.staging / "DSC00003.JPG", sample_jpeg("3"));
    refuse(100);
    EXPECT_EQ(fail_to_place("DSC00003.JPG").text,
              "A picture could not be brought to its place: File exists. It is now " +
                  (run_.staging / "DSC00003.JPG").string());
}

TEST_F(DiskThatKnowsMoreNames, GetsTheNextOneForAHalfToo) {
    const host::Place how{0, 7, "", "", "the pair", {}};
    fs::remove(desk_->bring(run_, "DSC00001.ARW", sample_raw("1"), how).path);
    refuse(2);
    const host::Picture half = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"), how);
    EXPECT_EQ(half.path, folder_.path() / "DSC00001-3.JPG");
    EXPECT_EQ(half.pair, "the pair");
}

TEST(UnreadableDisk, APictureIsReadInPiecesAndThroughInterruptionsAndOnce) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "file";
    const auto value = [](std::uint64_t at) {
        return static_cast<std::uint8_t>(1 + at % 251);
    };
    const std::uint64_t size = 40000;
    std::string content;
    for (std::uint64_t at = 0; at < size; ++at) {
        content += static_cast<char>(value(at));
    }
    write_file(path, content);
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    host::pictures::Window window(file, size + 10);
    int calls = 0;
    disk_calls::before_reading = [&] {
        return ++calls % 2 == 1 ? EINTR : disk_calls::at_most(10000);
    };
    for (const std::uint64_t first : {std::uint64_t{0}, std::uint64_t{32768}}) {
        const int before = calls;
        EXPECT_EQ(window.byte(first), value(first));
        EXPECT_GT(calls, before) << "another piece";
        const int enough = calls;
        const std::uint64_t last = first == 0 ? 32767 : size - 1;
        for (const std::uint64_t at : {last, first + 6000, first}) {
            EXPECT_EQ(window.byte(at), value(at)) << at;
        }
        EXPECT_EQ(calls, enough) << "the same piece";
    }
    EXPECT_EQ(window.byte(size), std::nullopt) << "it has shrunk";
    disk_calls::before_reading = [] {
        return EIO;
    };
    EXPECT_EQ(window.byte(0), std::nullopt);
    disk_calls::before_reading = {};
    ::close(file);
}

TEST(UnreadableDisk, ALedgerThatCannotBeReadIsNotTakenForAnEmptyOne) {
    const TemporaryFolder folder;
    host::Picture picture;
    {
        Desk desk(folder.path());
        desk.open();
        picture =
            desk.bring(desk.open_run(), "DSC00001.JPG", sample_jpeg("1"), {0, 41, "", "", "", {}});
    }
    Desk desk(folder.path());
    int reading = 0;
    for (bool failed = true; failed; ++reading) {
        failed = false;
        disk_calls::before_reading = [&, left = reading]() mutable {
            failed = failed || left == 0;
            return left-- == 0 ? EIO : 0;
        };
        const auto answer =
            desk.store().work(host::OpenFolder{desk.next_ticket(), folder.path().string()});
        disk_calls::before_reading = {};
        ASSERT_TRUE(answer);
        if (const auto* const opened = std::get_if<host::FolderOpened>(&*answer)) {
            EXPECT_EQ(opened->last_shot, 41U) << reading;
            EXPECT_EQ(opened->pictures, std::vector<host::Picture>{picture}) << reading;
            desk.store().work(host::CloseFolder{folder.path().string()});
        } else {
            EXPECT_EQ(std::get<host::FolderNotOpened>(*answer).problem.code,
                      host::Code::folder_not_taken);
        }
    }
    EXPECT_GT(reading, 2);
}

}  // namespace
