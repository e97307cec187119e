// The course of a tethered shoot, with the test as the worker and as the clock.
#include "tether/shoot/shoot.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <stdlib.h>
#include <utility>

#include "host/process/fields.h"

namespace {

using namespace tether;
using std::chrono::milliseconds;
using std::chrono::seconds;
namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class ShootTest : public testing::Test {
  protected:
    ShootTest() {
        char pattern[] = "/tmp/shoot-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(pattern));
        plan_.folder = folder_;
        plan_.shots = 2;
    }
    ~ShootTest() override {
        fs::remove_all(folder_);
    }

    // Starts the shoot and answers as a worker whose camera is there.
    void begin() {
        shoot_.emplace(plan_, [this](const std::string& line) { said_.push_back(line); });
        shoot_->begin(now_);
        hear("READY|OK");
    }
    void begin_with_camera() {
        begin();
        connected();
        EXPECT_EQ(said(), (Lines{"SET_DOWNLOAD_DIR|" + plan_.folder.string(),
                                 "CONNECT|" + plan_.save_dest, "PRIME", "CAPTURE"}));
    }
    void connected() {
        hear("CONNECTED|MODEL-A");
        hear("SAVE_DEST|" + plan_.save_dest);
        hear("FILE_TYPE|" + type_);
        hear("PRIME_DONE|OK");
    }

    void hear(const std::string& line) {
        shoot_->hear(line, now_);
    }

    // What has been said since the last time.
    Lines said() {
        return std::exchange(said_, {});
    }

    // A picture lands and is reported.
    void land(const std::string& name) {
        std::ofstream(plan_.folder / name) << "picture";
        hear("DOWNLOADED|" + (plan_.folder / name).string());
    }

    // Lets time pass up to the deadline, which must be that far away.
    void pass(host::Duration wait) {
        EXPECT_EQ(shoot_->deadline() - now_, wait);
        now_ = shoot_->deadline();
        shoot_->pass(now_);
    }

    const Report& report() {
        return shoot_->report();
    }

    fs::path folder_;
    Plan plan_;
    std::string type_ = "jpeg";
    std::optional<Shoot> shoot_;
    host::TimePoint now_{};
    Lines said_;
};

TEST_F(ShootTest, GoesFromReadyToTheLastPicture) {
    begin_with_camera();
    now_ += milliseconds(1500);
    hear("REMOTE_CAPTURED|OK");
    EXPECT_EQ(shoot_->progress(), "shot 1 of 2 on its way");
    land("DSC00001.JPG");
    EXPECT_EQ(said(), Lines{"CAPTURE"});
    EXPECT_FALSE(shoot_->over());
    land("DSC00002.JPG");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(said(), Lines{});
    EXPECT_EQ(report().troubles, Lines{});
    ASSERT_EQ(report().shots.size(), 2u);
    ASSERT_EQ(report().shots[0].pictures.size(), 1u);
    EXPECT_EQ(report().shots[0].pictures[0].took, milliseconds(1500));
    EXPECT_EQ(report().shots[0].pictures[0].bytes, 7u);
}

TEST_F(ShootTest, FoldersAndFilesTravelEscaped) {
    fs::rename(plan_.folder, plan_.folder.string() + "|%");
    plan_.folder += "|%";
    begin();
    EXPECT_TRUE(said().front().ends_with("%7C%25"));
    connected();
    std::ofstream(plan_.folder / "a|b.JPG") << "picture";
    hear("DOWNLOADED|" + host::escape_field((plan_.folder / "a|b.JPG").string()));
    EXPECT_EQ(report().troubles, Lines{});
    EXPECT_EQ(report().shots[0].pictures.size(), 1u);
}

TEST_F(ShootTest, AFolderThatTheWorkerWouldCutEndsItBeforeTheFirstWord) {
    plan_.folder = fs::path("/tmp") / std::string(1400, '%');
    begin();
    EXPECT_EQ(said(), Lines{});
    EXPECT_TRUE(shoot_->over());
    ASSERT_EQ(report().troubles.size(), 1u);
    EXPECT_TRUE(report().troubles.front().ends_with(
        " cannot be named to the worker: the command has 4222 bytes, and the worker takes at most "
        "4095"))
        << report().troubles.front();
}

TEST_F(ShootTest, KeepsTheTimeBetweenShots) {
    plan_.every = seconds(5);
    begin_with_camera();
    now_ += seconds(2);
    land("DSC00001.JPG");
    pass(seconds(3));
    EXPECT_EQ(said(), Lines{"CAPTURE"});
}

TEST_F(ShootTest, AShotWithoutAPictureIsGivenUp) {
    begin_with_camera();
    hear("REMOTE_CAPTURED|OK");
    pass(seconds(20));
    EXPECT_EQ(report().troubles, Lines{"shot 1 of 2 brought no picture in time"});
    EXPECT_EQ(report().without_picture, 1u);
    EXPECT_EQ(said(), Lines{"CAPTURE"});
}

TEST_F(ShootTest, AShotThatIsCutOffIsLost) {
    begin_with_camera();
    shoot_->stop("interrupted");
    shoot_->stop("the worker had to be killed");
    shoot_->conclude();
    EXPECT_EQ(report().troubles,
              (Lines{"interrupted", "the worker had to be killed", "shot 1 of 2 was cut off"}));
    EXPECT_EQ(report().without_picture, 1u);
}

TEST_F(ShootTest, APictureThatComesAfterTheCutIsItsShots) {
    begin_with_camera();
    shoot_->stop("interrupted");
    land("DSC00001.JPG");
    land("DSC00002.JPG");
    shoot_->conclude();
    EXPECT_EQ(report().troubles, Lines{"interrupted"});
    EXPECT_EQ(report().without_picture, 0u);
    EXPECT_EQ(report().shots[0].pictures.size(), 1u);
    EXPECT_EQ(report().unasked.size(), 1u);
}

TEST_F(ShootTest, BetweenShotsThereIsNothingToCutOff) {
    plan_.every = seconds(30);
    begin_with_camera();
    pass(seconds(20));
    shoot_->stop("interrupted");
    shoot_->conclude();
    EXPECT_EQ(report().troubles, (Lines{"shot 1 of 2 brought no picture in time", "interrupted"}));
    EXPECT_EQ(report().without_picture, 1u);
}

TEST_F(ShootTest, BeforeTheFirstShotThereIsNothingToCutOff) {
    begin();
    shoot_->stop("interrupted");
    shoot_->conclude();
    EXPECT_EQ(report().troubles, Lines{"interrupted"});
    EXPECT_EQ(report().without_picture, 0u);
}

TEST_F(ShootTest, ARawPairNeedsBothHalves) {
    type_ = "both";
    begin_with_camera();
    land("DSC00001.ARW");
    EXPECT_EQ(shoot_->progress(), "shot 1 of 2 on its way");
    land("DSC00001.JPG");
    EXPECT_EQ(said(), Lines{"CAPTURE"});
    land("DSC00002.ARW");
    pass(seconds(20));
    EXPECT_EQ(report().troubles, Lines{"shot 2 of 2 brought only half of its pair in time"});
}

TEST_F(ShootTest, AHalfThatComesLateJoinsItsOwnShot) {
    type_ = "both";
    begin_with_camera();
    land("DSC00001.ARW");
    pass(seconds(20));
    land("DSC00001.JPG");
    EXPECT_FALSE(shoot_->over());
    land("DSC00002.JPG");
    land("DSC00002.ARW");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().shots[0].pictures.size(), 2u);
    EXPECT_EQ(report().shots[1].pictures.size(), 2u);
    EXPECT_EQ(report().without_picture, 1u);
}

TEST_F(ShootTest, OtherMayBeAPairAndMayBeAlone) {
    type_ = "other";
    begin_with_camera();
    land("DSC00001.ARW");
    pass(seconds(3));
    land("DSC00002.ARW");
    land("DSC00002.HIF");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().troubles, Lines{});
}

TEST_F(ShootTest, ShotsForTheCardBringNoFiles) {
    plan_.save_dest = "card";
    begin_with_camera();
    hear("REMOTE_CAPTURED|OK");
    hear("REMOTE_CAPTURED|OK");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().troubles, Lines{});
}

TEST_F(ShootTest, WithoutACardTheShotsOfTheCardAreAwaited) {
    plan_.save_dest = "card";
    begin_with_camera();
    hear("SAVE_DEST|disk");
    hear("REMOTE_CAPTURED|OK");
    EXPECT_EQ(shoot_->progress(), "shot 1 of 2 on its way");
}

TEST_F(ShootTest, AFileOutsideOfTheFolderIsNotAccepted) {
    begin_with_camera();
    hear("DOWNLOADED|/etc/passwd");
    hear("DOWNLOADED|" + plan_.folder.string() + "/missing.JPG");
    fs::create_symlink("/etc/passwd", plan_.folder / "link.JPG");
    hear("DOWNLOADED|" + plan_.folder.string() + "/link.JPG");
    const std::string folder = plan_.folder.string();
    EXPECT_EQ(report().troubles,
              (Lines{"not accepted: /etc/passwd (it lies outside of the folder)",
                     "not accepted: " + folder + "/missing.JPG (there is no such file)",
                     "not accepted: " + folder + "/link.JPG (it lies outside of the folder)"}));
    EXPECT_TRUE(report().shots[0].pictures.empty());
    EXPECT_EQ(shoot_->progress(), "shot 1 of 2 on its way");
}

TEST_F(ShootTest, APictureNobodyAskedForIsCountedApart) {
    plan_.every = seconds(5);
    begin_with_camera();
    land("DSC00001.JPG");
    land("DSC00002.JPG");
    EXPECT_EQ(report().unasked.size(), 1u);
    EXPECT_EQ(report().shots[0].pictures.size(), 1u);
    EXPECT_EQ(report().troubles, Lines{});
}

TEST_F(ShootTest, AfterALossTheSessionIsOpenedAnew) {
    begin_with_camera();
    hear("DISCONNECTED|");
    EXPECT_EQ(shoot_->progress(), "no camera; trying again");
    hear("DISCONNECTED|");
    pass(seconds(1));
    EXPECT_EQ(said(), (Lines{"DISCONNECT", "CONNECT|disk"}));
    hear("DISCONNECTED|");
    hear("STATUS|Looking for a camera");
    hear("ERROR|Camera not detected");
    pass(seconds(2));
    EXPECT_EQ(said(), Lines{"CONNECT|disk"});
    connected();
    EXPECT_EQ(said(), (Lines{"PRIME", "CAPTURE"}));
    land("DSC00002.JPG");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().connection_losses, 1u);
    EXPECT_EQ(report().troubles, Lines{"shot 1 of 2 was lost with the camera"});
}

TEST_F(ShootTest, ALossBetweenShotsCostsNone) {
    plan_.every = seconds(5);
    begin_with_camera();
    land("DSC00001.JPG");
    hear("DISCONNECTED|");
    pass(seconds(1));
    said();
    connected();
    pass(seconds(4));
    EXPECT_EQ(said(), (Lines{"PRIME", "CAPTURE"}));
    land("DSC00002.JPG");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().connection_losses, 1u);
    EXPECT_EQ(report().troubles, Lines{});
}

TEST_F(ShootTest, ALossDuringTheLastShotIsTheEnd) {
    plan_.shots = 1;
    begin_with_camera();
    hear("DISCONNECTED|");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().troubles, Lines{"shot 1 of 1 was lost with the camera"});
}

TEST_F(ShootTest, ASessionThatTheSdkBringsBackIsTaken) {
    begin_with_camera();
    hear("DISCONNECTED|");
    connected();
    EXPECT_EQ(said(), (Lines{"PRIME", "CAPTURE"}));
}

TEST_F(ShootTest, BacksOffAndGivesUp) {
    begin();
    for (const int wait : {1, 2, 4, 8, 8}) {
        hear("ERROR|Camera not detected");
        pass(seconds(wait));
    }
    EXPECT_FALSE(shoot_->over());
    hear("ERROR|Camera not detected");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().troubles, Lines{"no session with a camera: Camera not detected"});
    EXPECT_EQ(std::count(said_.begin(), said_.end(), "CONNECT|disk"), 6);
    EXPECT_EQ(std::count(said_.begin(), said_.end(), "DISCONNECT"), 0);
}

TEST_F(ShootTest, AnOpeningThatEndsInSilenceIsTriedAgain) {
    begin();
    said();
    pass(seconds(25));
    pass(seconds(1));
    EXPECT_EQ(said(), (Lines{"DISCONNECT", "CONNECT|disk"}));
    hear("DISCONNECTED|");
    hear("DISCONNECTED|");
    pass(seconds(2));
    EXPECT_EQ(said(), (Lines{"DISCONNECT", "CONNECT|disk"}));
}

TEST_F(ShootTest, AHandleThatIsStillHeldIsGivenBack) {
    begin();
    said();
    hear("CONNECTED|already");
    pass(seconds(1));
    EXPECT_EQ(said(), (Lines{"DISCONNECT", "CONNECT|disk"}));
}

TEST_F(ShootTest, TheFileTypeIsAskedForWhereItDiffers) {
    plan_.file_type = "raw";
    begin();
    said();
    connected();
    EXPECT_EQ(said(), (Lines{"PRIME", "SET_FILE_TYPE|raw", "PRIME"}));
    hear("FILE_TYPE|raw");
    hear("PRIME_DONE|OK");
    EXPECT_EQ(said(), Lines{"CAPTURE"});
    hear("DISCONNECTED|");
    pass(seconds(1));
    type_ = "raw";
    connected();
    EXPECT_EQ(said(), (Lines{"DISCONNECT", "CONNECT|disk", "PRIME", "CAPTURE"}));
}

TEST_F(ShootTest, ARefusedFileTypeIsTroubleButNotTheEnd) {
    plan_.file_type = "raw";
    begin();
    connected();
    said();
    hear("ERROR|The camera would not change its file type — set it on the camera");
    hear("FILE_TYPE|jpeg");
    hear("PRIME_DONE|OK");
    EXPECT_EQ(said(), Lines{"CAPTURE"});
    EXPECT_EQ(report().troubles, Lines{"the worker says: The camera would not change its file type "
                                       "— set it on the camera"});
}

TEST_F(ShootTest, AWorkerWhoseSdkFailsIsTheEnd) {
    shoot_.emplace(plan_, [](const std::string&) {});
    shoot_->begin(now_);
    hear("ERROR|Sony Camera Remote SDK failed to initialise");
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().troubles.size(), 1u);
}

TEST_F(ShootTest, AWorkerThatNeverGetsReadyIsTheEnd) {
    shoot_.emplace(plan_, [](const std::string&) {});
    shoot_->begin(now_);
    pass(seconds(10));
    EXPECT_TRUE(shoot_->over());
    EXPECT_EQ(report().troubles, Lines{"the worker did not get ready in 10 s"});
}

}  // namespace
