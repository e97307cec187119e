// A folder for pictures: good, missing, forbidden, full.
#include <algorithm>
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
    constexpr uid_t nobody = 65534;
    const uid_t user = geteuid();
    fs::permissions(folder, fs::perms{0711});
    fs::permissions(pictures, fs::perms{0555});
    if (user == 0) {
        ASSERT_EQ(seteuid(nobody), 0);
    }
    const std::string forbidden = finding();
    ASSERT_EQ(seteuid(user), 0);
    fs::permissions(pictures, fs::perms::owner_all);
    EXPECT_EQ(forbidden,
              "FAIL folder: " + pictures.string() + " takes no files: Permission denied");
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
    return doctor::bytes_of(answer);
}

TEST_F(Folder, IsFull) {
    const std::string full = finding_on_disk(pictures, "size=64k", folder / "answer");
    if (full.empty()) {
        GTEST_SKIP() << "only root may mount a small disk";
    }
    EXPECT_EQ(full,
              "FAIL folder: " + pictures.string() + " takes no files: No space left on device");
    EXPECT_EQ(finding_on_disk(pictures, "size=50M", folder / "answer"),
              "warn folder: " + pictures.string() + " takes files, 52.4 MB are free");
}
#endif

}  // namespace
