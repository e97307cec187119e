// What comes of one call that fails, is interrupted, or takes nothing.

#include <cerrno>
#include <fcntl.h>
#include <utility>

#include "host/pictures/disk/listing.h"
#include "host/pictures/disk/lock.h"
#include "host/pictures/disk/regular_file.h"
#include "host/pictures/placing.h"
#include "tests/host/open_descriptors.h"
#include "tests/host/pictures/disk_calls.h"
#include "tests/host/pictures/long_ledger.h"

namespace {

using namespace host::pictures;
using host::Code;

// The call of this name and number, counted from 0, and no other.
auto once(std::string_view name, int number, int error) {
    return [=](std::string_view call) mutable {
        return call == name && number-- == 0 ? error : 0;
    };
}

// A reading that fails, at that number.
auto once_read(int number, int error) {
    return [=]() mutable {
        return number-- == 0 ? error : 0;
    };
}

void undisturbed() {
    disk_calls::before = {};
    disk_calls::before_reading = {};
    disk_calls::before_looking = {};
    disk_calls::on_facts = {};
}

class FailingLedger : public OpenLedger {
  protected:
    ~FailingLedger() override {
        undisturbed();
    }
};

const LedgerEntry one = ToldOf{"0000000000000001"};
const LedgerEntry other = ToldOf{"0000000000000002"};

TEST_F(FailingLedger, CutsALineAndNeverTheNextOne) {
    const std::string first = write_entry(one);
    const std::string next = write_entry(other);
    const std::string half = first.substr(0, first.size() / 2);
    const struct {
        const char* call;
        int number;
        int error;
        int answer;
        std::string file;
    } failures[] = {{"write", 0, EIO, EIO, next},
                    {"write", 1, EIO, EIO, half + "\n" + next},
                    {"write", 0, disk_calls::at_most(0), EIO, next},
                    {"write", 1, disk_calls::at_most(0), EIO, half + "\n" + next},
                    {"write", 0, disk_calls::at_most(1), 0, first + next},
                    {"write", 0, EINTR, 0, first + next},
                    {"write", 1, EINTR, 0, first + next},
                    {"fsync", 0, EIO, EIO, first + next},
                    {"fsync", 0, EINVAL, 0, first + next},
                    {"fsync", 0, ENOTSUP, 0, first + next}};
    for (const auto& failure : failures) {
        SCOPED_TRACE(failure.call + std::to_string(failure.number) + strerror(failure.error));
        write_file(path(), "");
        disk_calls::before = once(failure.call, failure.number, failure.error);
        errno = EINTR;  // of some call before
        EXPECT_EQ(ledger_.append(one), failure.answer);
        undisturbed();
        EXPECT_EQ(ledger_.append(other), 0);
        EXPECT_EQ(read_file(path()), failure.file);
    }
    // The disk that has cut a line takes nothing of the next one.
    write_file(path(), "");
    for (const int number : {1, 0}) {
        disk_calls::before = once("write", number, ENOSPC);
        EXPECT_EQ(ledger_.append(one), ENOSPC);
    }
    undisturbed();
    EXPECT_EQ(ledger_.append(other), 0);
    EXPECT_EQ(read_file(path()), half + "\n" + next);
}

TEST_F(FailingLedger, IsReadWholeOrNotAtAll) {
    add(write_entry(one) + std::string(LedgerLines::longest, '\n') + write_entry(other));
    const auto read = [&](int number, int error) {
        std::vector<LedgerEntry> entries;
        disk_calls::before_reading = once_read(number, error);
        const int answer = ledger_.read([&](const LedgerEntry& entry) {
            entries.push_back(entry);
            return true;
        });
        undisturbed();
        return std::pair(answer, entries);
    };
    using Entries = std::vector<LedgerEntry>;
    for (const int number : {0, 1, 2}) {
        EXPECT_EQ(read(number, EINTR), std::pair(0, Entries{one, other})) << number;
    }
    for (const int bytes : {1, 7}) {
        disk_calls::before_reading = [=] {
            return disk_calls::at_most(bytes);
        };
        Entries entries;
        EXPECT_EQ(ledger_.read_from(fs::file_size(path()) - write_entry(other).size(),
                                    [&](const LedgerEntry& entry, std::uint64_t) {
                                        entries.push_back(entry);
                                        return true;
                                    }),
                  0);
        EXPECT_EQ(entries, Entries{other}) << bytes;
    }
    EXPECT_EQ(read(0, EIO), std::pair(EIO, Entries{}));
    EXPECT_EQ(read(1, EIO), std::pair(EIO, Entries{one}));
    EXPECT_EQ(read(2, EIO), std::pair(EIO, Entries{one, other}));

    const std::uint64_t end = fs::file_size(path());
    disk_calls::before_reading = once_read(0, EINTR);
    EXPECT_EQ(ledger_.end_of(other), end);
    disk_calls::before_reading = once_read(0, EIO);
    EXPECT_FALSE(ledger_.has_before(end, other));
    disk_calls::before_looking = once("fstat", 0, EIO);
    EXPECT_EQ(ledger_.end_of(other), std::nullopt);
}

TEST_F(FailingLedger, IsNotOpenedWhereItsEndIsUnknown) {
    add("{");
    Ledger again;
    for (const int number : {0, 1}) {
        disk_calls::before_looking = once("fstat", number, ENOMEM);
        EXPECT_EQ(again.open(folder_fd_.number(), "ledger"), ENOMEM) << number;
    }
    disk_calls::before_looking = {};
    for (const auto& [error, answer] :
         {std::pair(ENXIO, ENXIO), std::pair(disk_calls::at_most(0), EIO)}) {
        disk_calls::before_reading = once_read(0, error);
        errno = 0;
        EXPECT_EQ(again.open(folder_fd_.number(), "ledger"), answer);
    }
}

class FailingCalls : public testing::Test {
  protected:
    ~FailingCalls() override {
        undisturbed();
    }
    fs::path incoming() const {
        return folder_.path() / ".incoming";
    }

    TemporaryFolder folder_{quick_disk()};
    Desk desk_{folder_.path()};
};

TEST_F(FailingCalls, LockOnceTheyAreNoLongerInterrupted) {
    const host::Descriptor here(::open(folder_.path().c_str(), O_RDONLY | O_CLOEXEC));
    disk_calls::before_looking = once("flock", 0, EINTR);
    EXPECT_EQ(take_lock(here.number(), "lock").taken, Taken::yes);
    disk_calls::before_looking = once("flock", 0, ENOLCK);
    const Lock none = take_lock(here.number(), "lock");
    EXPECT_EQ(none.taken, Taken::no);
    EXPECT_EQ(none.error, ENOLCK);
}

TEST_F(FailingCalls, LeaveNoNoteThatIsCut) {
    const host::Descriptor file(
        ::open((folder_.path() / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    for (const auto& [call, error, answer] :
         {std::tuple("pwrite", EIO, EIO), std::tuple("pwrite", disk_calls::at_most(0), ENOSPC),
          std::tuple("pwrite", disk_calls::at_most(4), ENOSPC),
          std::tuple("ftruncate", EROFS, EROFS)}) {
        disk_calls::before = once(call, 0, error);
        errno = 0;
        EXPECT_EQ(write_note(file.number(), {4711, {}}), answer) << call;
    }
}

TEST_F(FailingCalls, EndAListWithTheirError) {
    write_file(folder_.path() / "file", "");
    const host::Descriptor here(::open(folder_.path().c_str(), O_RDONLY | O_CLOEXEC));
    const int before = open_descriptors();
    for (const auto& [call, names] :
         {std::pair("fdopendir", 0), std::pair("readdir", 0), std::pair("readdir", 1)}) {
        int seen = 0;
        disk_calls::before_looking = [&, call = std::string_view(call), error = ENOMEM,
                                      after = names](std::string_view now) mutable {
            return now == call && seen == after ? std::exchange(error, 0) : 0;
        };
        const auto count = [&](const char*) {
            ++seen;
            return true;
        };
        EXPECT_EQ(list_folder(here.number(), count), ENOMEM) << call;
        EXPECT_EQ(seen, names) << call;
        undisturbed();
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(FailingCalls, OpenNoFolderAndSayWhy) {
    desk_.open();
    desk_.store().work(host::CloseFolder{folder_.path().string()});
    const std::string folder = folder_.path().string();
    const auto refused = [&](const std::string& path) {
        host::Problem problem = desk_.fail_to_open(path).problem;
        undisturbed();
        return problem;
    };
    for (const auto& [error, words] :
         {std::pair(EACCES, "Permission denied"), std::pair(EPERM, "Operation not permitted"),
          std::pair(EROFS, "Read-only file system")}) {
        disk_calls::before = once("mkdir", 0, error);
        EXPECT_EQ(
            refused(folder + "/new"),
            (host::Problem{Code::folder_not_permitted,
                           "The folder " + folder + "/new cannot be written to: " + words + ".",
                           {},
                           {}}));
    }
    const host::Problem not_taken{Code::folder_not_taken,
                                  "The folder " + folder + " is not taken: No locks available.",
                                  {},
                                  {}};
    for (const char* call : {"mkdirat", "openat"}) {
        disk_calls::before = once(call, 0, ENOLCK);
        EXPECT_EQ(refused(folder), not_taken) << call;
    }
    // The folder within, the lock, the ledger, and the list of runs.
    for (const int number : {1, 2, 3}) {
        disk_calls::before = once("openat", number, ENOLCK);
        EXPECT_EQ(refused(folder), not_taken) << number;
    }
    for (const char* call : {"fstat", "flock", "fdopendir", "readdir"}) {
        disk_calls::before_looking = once(call, 0, ENOLCK);
        EXPECT_EQ(refused(folder), not_taken) << call;
    }
    EXPECT_EQ(desk_.open().folder, folder);
}

TEST_F(FailingCalls, LeaveNothingInANewFolderThatIsNotSafe) {
    const host::Descriptor here(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    disk_calls::before = once("fsync", 0, EIO);
    int error = 0;
    EXPECT_FALSE(open_below(here.number(), "new/below", true, error).is_open());
    undisturbed();
    EXPECT_EQ(error, EIO);
    EXPECT_FALSE(open_below(here.number(), "new/below", false, error).is_open());
    EXPECT_EQ(error, ENOENT);
}

TEST_F(FailingCalls, LeaveTheRoomOfAFolderUnknown) {
    disk_calls::on_facts = [](struct statvfs& facts) {
        facts.f_bavail = 3;
        facts.f_bfree = 5;
        facts.f_bsize = 4096;
        facts.f_frsize = 512;
    };
    const auto look = [&] {
        return desk_.ask<host::FolderLooked>(
            host::LookAtFolder{desk_.next_ticket(), folder_.path().string()});
    };
    EXPECT_EQ(desk_.open().room, 3U * 512);
    EXPECT_EQ(desk_.open().room, 3U * 512) << "opened again";
    EXPECT_EQ(look().room, 3U * 512);
    EXPECT_TRUE(look().writable);
    disk_calls::on_facts = [](struct statvfs& facts) {
        facts.f_flag |= ST_RDONLY;
    };
    EXPECT_TRUE(look().same);
    EXPECT_FALSE(look().writable) << "a disk that a mistake has made read-only";
    disk_calls::before_looking = [](std::string_view call) {
        return call == "fstatvfs" ? EIO : 0;
    };
    EXPECT_EQ(look().room, 0U);
    EXPECT_FALSE(look().writable);
    EXPECT_EQ(desk_.open().room, std::nullopt);
}

TEST_F(FailingCalls, AreTriedAgainAndToldOfOnce) {
    desk_.open();
    host::pictures::Options options = impatient();
    options.folder_in_use = std::chrono::hours(1);
    int told = 0;
    options.folder_waited_for = [&](host::Ticket, const host::Problem&) {
        ++told;
    };
    disk_calls::before_looking = [&, left = 3](std::string_view call) mutable {
        if (call == "flock" && --left == 0) {
            desk_.store().work(host::CloseFolder{folder_.path().string()});
        }
        return 0;
    };
    Desk patient(folder_.path(), options);
    EXPECT_EQ(patient.open().folder, folder_.path().string());
    EXPECT_EQ(told, 1);
}

TEST_F(FailingCalls, TakeNoLockThatHasLostItsName) {
    host::pictures::Options options = impatient();
    options.folder_in_use = std::chrono::hours(1);
    Desk desk(folder_.path(), options);
    // Somebody deletes the lock file, or puts another in its place, before it is locked.
    for (const bool another : {false, true}) {
        disk_calls::before_looking = [&, left = 1](std::string_view call) mutable {
            if (call == "flock" && left-- > 0) {
                fs::rename(incoming() / "lock", incoming() / "old lock");
                if (another) {
                    write_file(incoming() / "lock", "");
                }
            }
            return 0;
        };
        EXPECT_EQ(desk.open().folder, folder_.path().string());
        undisturbed();
        EXPECT_EQ(desk_.fail_to_open(folder_.path().string()).problem.code, Code::folder_in_use);
        desk.store().work(host::CloseFolder{folder_.path().string()});
    }
}

TEST_F(FailingCalls, ThatLeaveAPictureWhereItIsAreToldOnce) {
    desk_.open();
    const OpenedRun run = desk_.open_run();
    write_file(run.staging / "A.JPG", sample_jpeg("A"));
    const auto examined = desk_.examine(run, "A.JPG");
    const auto always = [](std::string_view call) {
        return call == "renameat2" ? EIO : 0;
    };
    disk_calls::before = always;
    desk_.ask<host::NotPlaced>(host::Place{examined.ticket, {}, "", "", "p", {}});
    desk_.store().work(host::SweepRun{9, run.name, true});
    desk_.store().work(host::CloseFolder{folder_.path().string()});
    // The next start tries it as a placing that was cut, and as a file that was left behind.
    Desk next(folder_.path());
    EXPECT_EQ(next.open().problems,
              (std::vector<host::Problem>{{Code::picture_not_placed,
                                           "A picture could not be brought to its place: "
                                           "Input/output error. It is now " +
                                               (run.staging / "A.JPG").string(),
                                           {},
                                           {}}}));
}

}  // namespace
