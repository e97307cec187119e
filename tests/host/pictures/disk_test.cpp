// What the store is made of: lists, files of its own, locks and their notes, renames, and syncing.

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/pictures/disk/identity.h"
#include "host/pictures/disk/listing.h"
#include "host/pictures/disk/lock.h"
#include "host/pictures/disk/regular_file.h"
#include "host/pictures/disk/rename.h"
#include "host/pictures/disk/sync.h"
#include "tests/host/open_descriptors.h"
#include "tests/host/pictures/desk.h"

namespace {

using namespace host::pictures;

class Disk : public testing::Test {
  protected:
    Disk() : here_(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

    fs::path at(const std::string& name) const {
        return folder_.path() / name;
    }
    int here() const {
        return here_.number();
    }
    // The errno that opening it gets.
    int opening(const char* name, int flags) const {
        int error = -1;
        const host::Descriptor file = open_regular(here(), name, flags, error);
        EXPECT_EQ(file.is_open(), error == 0) << name;
        EXPECT_TRUE(error != 0 || (::fcntl(file.number(), F_GETFD) & FD_CLOEXEC) != 0) << name;
        return error;
    }
    int opening_folder(const char* name) const {
        int error = -1;
        const host::Descriptor folder = open_folder(here(), name, error);
        EXPECT_EQ(folder.is_open(), error == 0) << name;
        EXPECT_TRUE(error != 0 || (::fcntl(folder.number(), F_GETFD) & FD_CLOEXEC) != 0) << name;
        return error;
    }

    TemporaryFolder folder_{quick_disk()};  // which has a rename that replaces nothing
    host::Descriptor here_;
};

TEST_F(Disk, AListHasEveryNameButTheFoldersOwnTwo) {
    const std::set<std::string> all{".hidden", "..two", "file", "folder", "link"};
    for (const char* name : {".hidden", "..two", "file"}) {
        write_file(at(name), "");
    }
    fs::create_directory(at("folder"));
    fs::create_symlink("nowhere", at("link"));
    const int before = open_descriptors();
    for (const bool lacks_standard_input : {false, true}) {
        const int aside = ::dup(0);
        if (lacks_standard_input) {
            ::close(0);
        }
        std::multiset<std::string> names;
        const int error = list_folder(here(), [&](const char* name) {
            names.insert(name);
            return true;
        });
        ::dup2(aside, 0);
        ::close(aside);
        EXPECT_EQ(error, 0);
        EXPECT_EQ(names, std::multiset<std::string>(all.begin(), all.end()));
    }
    int seen = 0;
    EXPECT_EQ(list_folder(here(), [&](const char*) { return ++seen < 3; }), 0);
    EXPECT_EQ(seen, 3);
    EXPECT_EQ(open_descriptors(), before);

    const auto never = [](const char*) {
        ADD_FAILURE() << "a name";
        return true;
    };
    const host::Descriptor file(::open(at("file").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(list_folder(file.number(), never), ENOTDIR);
    EXPECT_EQ(list_folder(-1, never), EBADF);
}

TEST_F(Disk, OnlyARegularFileIsOpened) {
    write_file(at("file"), "");
    fs::create_symlink("file", at("link"));
    fs::create_symlink("nowhere", at("dangling"));
    fs::create_directory(at("folder"));
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    const int before = open_descriptors();
    EXPECT_EQ(opening("file", O_RDWR), 0);
    EXPECT_EQ(opening("missing", O_RDWR), ENOENT);
    EXPECT_EQ(opening("folder", O_RDWR), EISDIR);
    EXPECT_EQ(opening("folder", O_RDONLY), EINVAL);
    for (const char* name : {"link", "dangling", "pipe"}) {
        for (const int flags : {O_RDONLY, O_WRONLY, O_RDWR | O_CREAT}) {
            EXPECT_EQ(opening(name, flags), EINVAL) << name << " " << flags;
        }
    }
    EXPECT_FALSE(fs::exists(at("nowhere")));
    EXPECT_EQ(opening_folder("folder"), 0);
    EXPECT_EQ(opening_folder("missing"), ENOENT);
    EXPECT_EQ(opening_folder("file"), ENOTDIR);
    fs::create_symlink("folder", at("linked folder"));
    EXPECT_NE(opening_folder("linked folder"), 0);
    EXPECT_EQ(open_descriptors(), before);

    const mode_t mask = ::umask(0);
    EXPECT_EQ(opening("new", O_RDWR | O_CREAT), 0);
    ::umask(mask);
    EXPECT_EQ(fs::status(at("new")).permissions(), fs::perms(0600));
}

TEST_F(Disk, ARenameReplacesNothing) {
    write_file(at("one"), "1");
    write_file(at("other"), "2");
    fs::create_symlink("nowhere", at("link"));
    const auto rename = [&](const char* from, const char* to) {
        return rename_without_replacing(here(), from, here(), to);
    };
    EXPECT_EQ(rename("one", "other"), EEXIST);
    EXPECT_EQ(rename("one", "link"), EEXIST);
    EXPECT_EQ(rename("missing", "new"), ENOENT);
    EXPECT_EQ(rename("one", "new"), 0);
    EXPECT_EQ(read_file(at("other")) + read_file(at("new")), "21");
}

TEST(Errors, SayWhereADiskHasNoRenameThatReplacesNothing) {
    for (const int error : {EINVAL, ENOSYS, ENOTSUP, EOPNOTSUPP}) {
        EXPECT_TRUE(knows_no_such_rename(error)) << error;
    }
    for (const int error : {0, EEXIST, EIO, ENOENT, EROFS}) {
        EXPECT_FALSE(knows_no_such_rename(error)) << error;
    }
}

TEST_F(Disk, WhatCannotBeSyncedIsNoError) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe(pipe.data()), 0);
    EXPECT_EQ(sync_file(pipe[1]), 0);
    ::close(pipe[0]);
    ::close(pipe[1]);
    EXPECT_EQ(sync_file(pipe[1]), EBADF);
    EXPECT_EQ(sync_file(here()), 0);
}

TEST_F(Disk, ALockIsHeldByOneUntilItIsClosed) {
    EXPECT_EQ(take_existing_lock(here(), "lock").error, ENOENT);
    EXPECT_EQ(take_existing_lock(here(), "lock").taken, Taken::no);
    EXPECT_FALSE(fs::exists(at("lock")));
    Lock first = take_lock(here(), "lock");
    EXPECT_EQ(first.taken, Taken::yes);
    EXPECT_EQ(first.error, 0);
    EXPECT_EQ(write_note(first.file.number(), {4711, {}}), 0);
    for (const auto take : {take_lock, take_existing_lock}) {
        const Lock second = take(here(), "lock");
        EXPECT_EQ(second.taken, Taken::held_by_another);
        EXPECT_EQ(read_note(second.file.number()).process, 4711);
    }
    first.file.close();
    EXPECT_EQ(take_existing_lock(here(), "lock").taken, Taken::yes);
    fs::create_directory(at("folder"));
    EXPECT_EQ(take_lock(here(), "folder").error, EISDIR);
}

TEST_F(Disk, ANoteIsReadAsItWasWritten) {
    const Lock lock = take_lock(here(), "lock");
    const int file = lock.file.number();
    // As long as a path can be, every byte of it escaped; each shorter than the one before.
    const std::string longest(4096, '\xFF');
    for (const LockNote& note :
         {LockNote{std::numeric_limits<pid_t>::max(), longest}, LockNote{4711, "/a\nb%\n\n"},
          LockNote{4711, {}}, LockNote{1, {}}, LockNote{0, {}}}) {
        EXPECT_EQ(write_note(file, note), 0);
        EXPECT_EQ(read_note(file).process, note.process);
        EXPECT_EQ(read_note(file).stands_in, note.stands_in);
    }
    EXPECT_EQ(read_file(at("lock")), "\n");
    EXPECT_EQ(write_note(file, {0, "/a"}), 0);
    EXPECT_EQ(read_file(at("lock")), "\n/a\n");

    const host::Descriptor read_only(::open(at("lock").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(write_note(read_only.number(), {1, {}}), EBADF);
}

TEST_F(Disk, ANoteOfAnythingElseNamesNobody) {
    const struct {
        const char* text;
        pid_t process;
        const char* stands_in;
    } notes[] = {{"", 0, ""},
                 {"\n", 0, ""},
                 {"-4711\n/a\n", 0, "/a"},
                 {"x\n/a\n", 0, "/a"},
                 {"99999999999999999999\n", 0, ""},
                 {"4711", 4711, ""},
                 {"4", 4, ""},
                 {"4711\n/torn", 4711, ""},
                 {"4711\n/a\n/b\n", 4711, "/a"},
                 {"0\n", 0, ""},
                 {"1\n\n/b\n", 1, ""}};
    for (const auto& note : notes) {
        write_file(at("lock"), note.text);
        const host::Descriptor file(::open(at("lock").c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_EQ(read_note(file.number()).process, note.process) << note.text;
        EXPECT_EQ(read_note(file.number()).stands_in, note.stands_in) << note.text;
    }
    EXPECT_EQ(read_note(-1).process, 0);
}

// Has one file open, and no other of the test's, until it goes.
class Holder {
  public:
    explicit Holder(int file) {
        std::array<int, 2> ready{};
        EXPECT_EQ(::pipe(ready.data()), 0);
        process_ = ::fork();
        if (process_ == 0) {
            for (int other = 3; other < 1024; ++other) {
                if (other != file) {
                    ::close(other);
                }
            }
            for (;;) {
                ::pause();
            }
        }
        ::close(ready[1]);
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 0) << "until it has closed the others";
        ::close(ready[0]);
    }
    ~Holder() {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    // It stays in the list of processes, as nobody has asked how it ended.
    void end() {
        ::kill(process_, SIGKILL);
        siginfo_t ended{};
        EXPECT_EQ(::waitid(P_PID, static_cast<id_t>(process_), &ended, WEXITED | WNOWAIT), 0);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    pid_t process() const {
        return process_;
    }

  private:
    pid_t process_ = -1;
};

TEST_F(Disk, TheHoldersOfALockAreTheOthersThatCanWriteToIt) {
    const auto open = [&](const char* name, int flags) {
        return host::Descriptor(::open(at(name).c_str(), flags | O_CREAT | O_CLOEXEC, 0600));
    };
    const auto both = open("lock", O_RDWR);
    const auto write_only = open("lock", O_WRONLY | O_APPEND);
    const auto read_only = open("lock", O_RDONLY | O_NONBLOCK);
    const auto another = open("another", O_RDWR);
    const Holder reader(read_only.number());
    const Holder one(both.number());
    const Holder stranger(another.number());
    const Holder other(write_only.number());
    Holder ended(both.number());
    ended.end();
    std::vector<pid_t> holders = processes_with(both.number());
    std::sort(holders.begin(), holders.end());
    std::vector<pid_t> expected{one.process(), other.process()};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(holders, expected);
    EXPECT_EQ(processes_with(read_only.number()).size(), 2U);
    EXPECT_EQ(processes_with(another.number()), std::vector<pid_t>{stranger.process()});
    EXPECT_EQ(processes_with(-1), std::vector<pid_t>{});
}

}  // namespace
