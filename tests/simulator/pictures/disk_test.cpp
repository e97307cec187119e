// Pictures are whole or not there.

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#if defined(__linux__)
#include <sched.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#endif

#include "tests/simulator/pictures/picture_fixture.h"

namespace {
int g_next_close_error = 0;
}  // namespace

#if defined(__linux__)
// Found by the module before the C library's own: a network file system may keep the news of a full
// disk until a file is closed.
extern "C" int close(int descriptor) {
    const auto result = static_cast<int>(syscall(SYS_close, descriptor));
    if (g_next_close_error != 0) {
        errno = std::exchange(g_next_close_error, 0);
        return -1;
    }
    return result;
}
#endif

namespace {

class Disk : public PictureTest, public testing::WithParamInterface<const char*> {
  protected:
    int draw(const std::string& target, int close_error = 0) const {
        const CameraSimPicture shot = picture(target);
        DrawFunction* const draw_picture =
            GetParam() == std::string("raw") ? module_raw : module_jpeg;
        testing::internal::CaptureStderr();
        g_next_close_error = close_error;
        const int error = draw_picture(&shot);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        return error;
    }

    std::string file = path("picture");
};

int lowest_free_descriptor() {
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(descriptor);
    return descriptor;
}

TEST_P(Disk, AnUnwritableFolderIsReported) {
    EXPECT_EQ(draw(path("missing/picture")), ENOENT);
    EXPECT_EQ(draw(folder), EEXIST);
    EXPECT_EQ(draw("/dev/null/picture"), ENOTDIR);
    EXPECT_EQ(draw(""), ENOENT);
    EXPECT_EQ(draw(path(std::string(300, 'x'))), ENAMETOOLONG);
    EXPECT_TRUE(files().empty());
}

TEST_P(Disk, AForbiddenFolderIsReported) {
    constexpr uid_t nobody = 65534;
    const uid_t user = geteuid();
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
    if (user == 0) {
        ASSERT_EQ(seteuid(nobody), 0);
    }
    const int error = draw(file);
    ASSERT_EQ(seteuid(user), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    EXPECT_EQ(error, EACCES);
    EXPECT_TRUE(files().empty());
}

// The limit stops the writing at every kind of place: in the header, between two buffers, at the
// last byte.
TEST_P(Disk, AFileThatCannotGrowIsRemoved) {
    ASSERT_EQ(draw(file), 0);
    const std::string whole = content(file);
    const auto size = static_cast<rlim_t>(whole.size());
    std::filesystem::remove(file);
    const int free_before = lowest_free_descriptor();
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    for (const rlim_t limit :
         {rlim_t{0}, rlim_t{1}, rlim_t{8}, rlim_t{500}, rlim_t{10'000}, size / 2, size - 1}) {
        const rlimit lowered{limit, before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &lowered), 0);
        const int error = draw(file);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(error, EFBIG) << limit;
        EXPECT_TRUE(files().empty()) << limit;
    }
    EXPECT_EQ(lowest_free_descriptor(), free_before);
    EXPECT_EQ(draw(file), 0);
    EXPECT_EQ(content(file), whole);
}

TEST_P(Disk, WhatLiesAtThePathIsLeftAlone) {
    std::ofstream(file) << "the user's own";
    EXPECT_EQ(draw(file), EEXIST);
    EXPECT_EQ(content(file), "the user's own");
    for (const std::string& target : {file, path("nowhere")}) {
        const std::string link = path("link");
        std::filesystem::create_symlink(target, link);
        EXPECT_EQ(draw(link), EEXIST);
        EXPECT_TRUE(std::filesystem::is_symlink(link));
        std::filesystem::remove(link);
    }
    EXPECT_EQ(files(), std::vector<std::string>{"picture"});
    EXPECT_EQ(content(file), "the user's own");
}

#if defined(__linux__)

TEST_P(Disk, AnErrorThatOnlyClosingReportsIsNoticed) {
    const int free_before = lowest_free_descriptor();
    for (const int error : {ENOSPC, EDQUOT, EIO}) {
        EXPECT_EQ(draw(file, error), error);
        EXPECT_TRUE(files().empty());
    }
    EXPECT_EQ(lowest_free_descriptor(), free_before);
}

// Gives the child process a view of the file systems of its own, in which the folder is a disk of
// so many bytes. Nothing of it stays when the child ends.
bool mount_small_disk(const std::string& folder, std::size_t bytes) {
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", folder.c_str(), "tmpfs", 0, ("size=" + std::to_string(bytes)).c_str()) ==
               0;
}

int exit_status_of_child(const std::function<int()>& child) {
    const pid_t process = fork();
    if (process == 0) {
        _exit(child());
    }
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    EXPECT_TRUE(WIFEXITED(status)) << status;
    return WEXITSTATUS(status);
}

TEST_P(Disk, AFullDiskIsReportedAndNothingStays) {
    constexpr int no_disk = 200;
    constexpr int left_behind = 201;
    ASSERT_EQ(draw(file), 0);
    const std::size_t size = content(file).size();
    std::filesystem::remove(file);
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    for (std::size_t disk = page; disk < size; disk += 4 * page) {
        const int status = exit_status_of_child([&] {
            if (!mount_small_disk(folder, disk)) {
                return no_disk;
            }
            const int error = draw(file);
            return files().empty() ? error : left_behind;
        });
        if (status == no_disk) {
            GTEST_SKIP() << "a small disk cannot be mounted here: it takes root, and a mount point "
                            "as the root";
        }
        EXPECT_EQ(status, ENOSPC) << "a disk of " << disk << " bytes for a file of " << size;
    }
}

#endif

INSTANTIATE_TEST_SUITE_P(Pictures, Disk, testing::Values("jpeg", "raw"),
                         [](const auto& format) { return std::string(format.param); });

}  // namespace
