// A folder for pictures: good, missing, forbidden, full.
#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__linux__)
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#endif

#include "tests/tether/doctor/bundle_fixture.h"

namespace {

namespace fs = std::filesystem;

class Folder : public BundleTest {
  protected:
    Folder() {
        fs::create_directory(pictures);
    }

    std::string finding() const {
        return said(doctor::folder_takes_pictures(pictures));
    }

    const fs::path pictures = folder / "pictures";
};

TEST_F(Folder, TakesPictures) {
    const std::string expected = "folder: " + pictures.string() + " takes files, ";
    EXPECT_TRUE(holds(finding(), expected)) << finding();
    EXPECT_TRUE(holds(finding(), "B are free")) << finding();
    EXPECT_TRUE(fs::is_empty(pictures)) << "nothing is left behind";
}

TEST_F(Folder, IsMissing) {
    fs::remove(pictures);
    EXPECT_EQ(finding(), "FAIL folder: " + pictures.string() + " is not there");
    write(pictures, "a file");
    EXPECT_EQ(finding(), "FAIL folder: " + pictures.string() + " is not a folder");
}

TEST_F(Folder, IsForbidden) {
    fs::permissions(folder, fs::perms{0711});
    fs::permissions(pictures, fs::perms{0555});
    std::string forbidden;
    as_nobody([&] { forbidden = finding(); });
    fs::permissions(pictures, fs::perms::owner_all);
    EXPECT_EQ(forbidden,
              "FAIL folder: " + pictures.string() + " takes no files: Permission denied");
}

TEST_F(Folder, MayNotBeEntered) {
    fs::permissions(folder, fs::perms{0700});
    std::string forbidden;
    as_nobody([&] { forbidden = finding(); });
    EXPECT_EQ(forbidden,
              "FAIL folder: " + pictures.string() + " cannot be read: Permission denied");
}

TEST_F(Folder, IsAnythingElse) {
    const std::string name = "FAIL folder: " + pictures.string();
    fs::remove(pictures);
    ASSERT_EQ(mkfifo(pictures.c_str(), 0600), 0);
    EXPECT_EQ(finding(), name + " is not a folder");
    fs::remove(pictures);
    fs::create_symlink("/dev/zero", pictures);
    EXPECT_EQ(finding(), name + " is not a folder");
    fs::remove(pictures);
    fs::create_symlink("pictures", pictures);
    EXPECT_EQ(finding(), name + " is behind links that lead back to themselves");
    fs::remove(pictures);
    fs::create_symlink("nowhere", pictures);
    EXPECT_EQ(finding(), name + " is a link to nowhere, which is not there");
}

#if defined(__linux__)
// What the finding is on a disk of this size of its own; empty when none can be mounted. In a child
// that takes the mount with it.
std::string finding_on_disk(const fs::path& pictures, const char* options, const fs::path& answer) {
    const pid_t child = fork();
    if (child == 0) {
        const bool mounted = unshare(CLONE_NEWNS) == 0 &&
                             mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("none", pictures.c_str(), "tmpfs", 0, options) == 0;
        if (mounted) {
            std::ofstream(answer) << said(doctor::folder_takes_pictures(pictures));
        }
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    std::ifstream stream(answer);
    std::string text;
    std::getline(stream, text);
    return text;
}

TEST_F(Folder, IsFull) {
    const std::string full = finding_on_disk(pictures, "size=64k", folder / "answer");
    if (full.empty()) {
        GTEST_SKIP()
            << "a small disk cannot be mounted here: it takes root, and a mount point as the root";
    }
    EXPECT_EQ(full,
              "FAIL folder: " + pictures.string() + " takes no files: No space left on device");
    EXPECT_EQ(finding_on_disk(pictures, "size=50M", folder / "answer"),
              "warn folder: " + pictures.string() + " takes files, 52.4 MB are free");
}
#endif

}  // namespace
