// Disks that a test has to mount: small, read-only, and exFAT. It takes root.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/pictures/disk/rename.h"
#include "host/process/clock.h"
#include "tests/host/pictures/afternoon.h"

namespace {

using host::Code;

class Disks : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "mounting takes root";
        }
        fs::create_directory(where());
    }
    void TearDown() override {
        if (mounted_) {
            ::umount2(where().c_str(), device_.empty() ? MNT_DETACH : 0);
        }
        if (!device_.empty()) {
            run("losetup --detach " + device_);
        }
    }
    fs::path where() const {
        return folder_.path() / "disk";
    }
    bool mount_memory(const char* options) {
        mounted_ = ::mount("tmpfs", where().c_str(), "tmpfs", 0, options) == 0;
        // A root that a container keeps from mounting proves nothing; any other failure is ours.
        EXPECT_TRUE(mounted_ || errno == EPERM || errno == EACCES) << std::strerror(errno);
        return mounted_;
    }
    // By a program outside the kernel. Debian 12's has no rename that replaces nothing. False where
    // `lacking_` says what is missing for it; any other failure is ours.
    bool mount_exfat() {
        if (device_.empty() && !show_image()) {
            return false;
        }
        const Ran mounted = run("mount.exfat-fuse " + device_ + " " + where().string());
        mounted_ = mounted.succeeded;
        if (!mounted_) {
            return lacks(mounted, "a right");
        }
        // Its files are everybody's, the folder under it is not: a test without the disk would
        // prove nothing.
        EXPECT_EQ(fs::status(where()).permissions(), fs::perms::all) << mounted.output;
        return !HasFailure();
    }
    bool has_exclusive_rename() const {
        write_file(where() / "before", "");
        return host::pictures::rename_without_replacing(AT_FDCWD, (where() / "before").c_str(),
                                                        AT_FDCWD, (where() / "after").c_str()) == 0;
    }
    // Who looks at the files that other processes have open, as a store at its start does, holds
    // their disks for a moment: another test may.
    void remount_exfat() {
        const auto deadline = host::Clock::now() + std::chrono::seconds(30);
        int result = 0;
        while ((result = ::umount2(where().c_str(), 0)) != 0 && errno == EBUSY &&
               host::Clock::now() < deadline) {
            ::sched_yield();
        }
        ASSERT_EQ(result, 0) << std::strerror(errno);
        mounted_ = false;
        ASSERT_TRUE(mount_exfat());
    }

    TemporaryFolder folder_;
    bool mounted_ = false;
    std::string lacking_;

  private:
    struct Ran {
        bool succeeded;
        std::string output;
    };

    static Ran run(const std::string& command) {
        FILE* const pipe = ::popen(("export LC_ALL=C; " + command + " 2>&1").c_str(), "r");
        std::string text;
        for (int byte = std::fgetc(pipe); byte != EOF; byte = std::fgetc(pipe)) {
            text += static_cast<char>(byte);
        }
        return {::pclose(pipe) == 0, text};
    }

    // False; it fails unless the program says that it has no such device, or may not.
    bool lacks(const Ran& ran, const std::string& what) {
        lacking_ = what + " is missing: " + ran.output;
        const auto says = [&](const std::string& words) {
            return ran.output.find(words) != std::string::npos;
        };
        EXPECT_TRUE(says("cannot find an unused loop device") || says(std::strerror(EPERM)) ||
                    says(std::strerror(EACCES)))
            << ran.output;
        return false;
    }

    // A loop device that shows an exFAT image.
    bool show_image() {
        for (const std::string program : {"mkfs.exfat", "losetup", "mount.exfat-fuse"}) {
            if (!run("command -v " + program).succeeded) {
                lacking_ = program + " is missing";
                return false;
            }
        }
        if (::access("/dev/fuse", R_OK | W_OK) != 0) {
            lacking_ = std::string("/dev/fuse: ") + std::strerror(errno);
            return false;
        }
        const std::string image = folder_.path() / "image";
        write_file(image, "");
        fs::resize_file(image, std::size_t{8} << 20);
        const Ran made = run("mkfs.exfat " + image);
        EXPECT_TRUE(made.succeeded) << made.output;
        const Ran shown = run("losetup --find --show " + image);
        if (!shown.succeeded) {
            return lacks(shown, "a loop device");
        }
        device_ = shown.output.substr(0, shown.output.find('\n'));
        return made.succeeded;
    }

    std::string device_;  // that shows the image
};

TEST_F(Disks, AFullDiskLosesNothing) {
    if (!mount_memory("size=256k")) {
        GTEST_SKIP() << "mounting is not permitted here";
    }
    Desk desk(where());
    desk.open();
    const OpenedRun run = desk.open_run();
    write_file(run.staging / "DSC00001.JPG", sample_jpeg("1"));
    const auto examined = desk.examine(run, "DSC00001.JPG");
    // The ledger stands at the end of a block, and no other is free.
    std::ofstream(where() / ".incoming/ledger", std::ios::app)
        << std::string(4096 - fs::file_size(where() / ".incoming/ledger") % 4096 - 1, ' ') << "\n";
    write_file(where() / "filler", std::string(1 << 20, 'x'));
    ASSERT_EQ(fs::space(where()).available, 0U);

    const auto refused =
        desk.ask<host::NotPlaced>(host::Place{examined.ticket, 3, "", "", "p", {}});
    EXPECT_EQ(refused.problem.code, Code::picture_not_placed);
    EXPECT_NE(refused.problem.text.find(run.staging / "DSC00001.JPG"), std::string::npos)
        << refused.problem.text;
    EXPECT_EQ(read_file(run.staging / "DSC00001.JPG"), sample_jpeg("1"));
    EXPECT_EQ(desk.ask<host::FolderLooked>(host::LookAtFolder{9, where().string()}).room, 0U);

    fs::remove(where() / "filler");
    const auto swept = desk.sweep(run);
    ASSERT_EQ(swept.pictures.size(), 1U);
    EXPECT_EQ(swept.pictures[0].shot, std::uint64_t{3});
    EXPECT_EQ(read_file(swept.pictures[0].path), sample_jpeg("1"));
}

TEST_F(Disks, ADiskThatHasBecomeReadOnlyLosesNothing) {
    if (!mount_memory("size=256k")) {
        GTEST_SKIP() << "mounting is not permitted here";
    }
    auto desk = std::make_unique<Desk>(where());
    desk->open();
    const OpenedRun run = desk->open_run();
    write_file(run.staging / "DSC00001.JPG", sample_jpeg("1"));
    const auto examined = desk->examine(run, "DSC00001.JPG");
    desk = nullptr;
    Desk next(where());
    ASSERT_EQ(::mount("", where().c_str(), "", MS_REMOUNT | MS_RDONLY, ""), 0);
    EXPECT_EQ(next.fail_to_open(where().string()).problem.code, Code::folder_not_permitted);
    ASSERT_EQ(::mount("", where().c_str(), "", MS_REMOUNT, ""), 0);
    EXPECT_EQ(next.open().pictures.size(), 1U);
    static_cast<void>(examined);
}

TEST_F(Disks, AFolderThatIsReachedByASecondPathKeepsItsFirst) {
    const fs::path first = folder_.path() / "first";
    fs::create_directory(first);
    mounted_ = ::mount(first.c_str(), where().c_str(), nullptr, MS_BIND, nullptr) == 0;
    if (!mounted_) {
        EXPECT_TRUE(errno == EPERM || errno == EACCES) << std::strerror(errno);
        GTEST_SKIP() << "mounting is not permitted here";
    }
    Desk desk(first);
    desk.open();
    const auto second = desk.ask<host::FolderOpened>(host::OpenFolder{9, where().string()});
    EXPECT_EQ(second.folder, first.string());
    EXPECT_TRUE(desk.store().is_open(first.string()));
    desk.store().work(host::CloseFolder{first.string()});
}

TEST_F(Disks, AnEmptyDiskIsTakenAndAnEjectedOneIsGone) {
    if (!mount_memory("size=256k")) {
        GTEST_SKIP() << "mounting is not permitted here";
    }
    Desk desk(where());
    desk.open();
    ASSERT_EQ(::umount2(where().c_str(), MNT_DETACH), 0);
    mounted_ = false;
    const auto looked = desk.ask<host::FolderLooked>(host::LookAtFolder{9, where().string()});
    EXPECT_TRUE(looked.there);
    EXPECT_FALSE(looked.same);
    EXPECT_EQ(desk.ask<host::RunNotOpened>(host::OpenRun{10, where().string(), ""}).problem.code,
              Code::folder_gone);
    EXPECT_TRUE(fs::is_empty(where()));
}

TEST_F(Disks, ExfatTakesPicturesByReservationWhereItHasNoSuchRename) {
    if (!mount_exfat()) {
        GTEST_SKIP() << "exFAT cannot be mounted here: " << lacking_;
    }
    Desk desk(where());
    desk.open();
    const OpenedRun run = desk.open_run();
    write_file(where() / "dsc00002.jpg", "a stranger's");
    EXPECT_EQ(desk.bring(run, "DSC00001.JPG", sample_jpeg("1")).path,
              (where() / "DSC00001.JPG").string());
    EXPECT_EQ(desk.bring(run, "DSC00002.JPG", sample_jpeg("2")).path,
              (where() / "DSC00002-2.JPG").string());
    EXPECT_EQ(read_file(where() / "dsc00002.jpg"), "a stranger's");
    EXPECT_EQ(read_file(where() / "DSC00001.JPG"), sample_jpeg("1"));
    const std::string ledger = read_file(where() / ".incoming/ledger");
    EXPECT_EQ(ledger.find("\"reserves\":true") == std::string::npos, has_exclusive_rename());
}

TEST_F(Disks, ExfatIsBroughtInAfterItsFilesGotNewNumbers) {
    if (!mount_exfat()) {
        GTEST_SKIP() << "exFAT cannot be mounted here: " << lacking_;
    }
    host::Picture picture;
    {
        Desk desk(where());
        desk.open();
        const OpenedRun run = desk.open_run();
        picture = desk.bring(run, "DSC00001.JPG", sample_jpeg("1"));
        write_file(run.staging / "DSC00002.JPG", sample_jpeg("2"));
    }
    // As a kill before the last line leaves it.
    std::string ledger = read_file(where() / ".incoming/ledger");
    ledger.erase(ledger.find("{\"placed\""));
    write_file(where() / ".incoming/ledger", ledger);
    remount_exfat();
    {
        Desk desk(where());
        const auto opened = desk.open();
        EXPECT_EQ(names_of(opened.pictures, where()),
                  (std::set<std::string>{"DSC00001.JPG", "DSC00002.JPG"}));
        EXPECT_EQ(opened.pictures.at(0).id, picture.id);
        EXPECT_TRUE(opened.problems.empty());
    }
}

TEST_F(Disks, ExfatLosesNothingWhenKilledAtAnyStepAndMountedAnew) {
    if (!mount_exfat()) {
        GTEST_SKIP() << "exFAT cannot be mounted here: " << lacking_;
    }
    // A step and the next but two leave the same on the disk more often than not.
    constexpr int stride = 3;
    int step = 0;
    for (bool cut = true; cut; step += stride) {
        SCOPED_TRACE("step " + std::to_string(step));
        const TemporaryFolder folder(where());
        const Afternoon afternoon(folder.path());
        cut = cut_at(step, [&] { afternoon.shoot(); });
        remount_exfat();
        afternoon.check();
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(step, 100);
}

}  // namespace
