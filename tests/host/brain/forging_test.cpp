// Names of files that look like lines of the worker: nothing that a client sees changes.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using States = std::vector<State>;

const std::vector<std::string> forged_lines{
    "DISCONNECTED|",
    "CONNECTED|x",
    "CONNECTED|already",
    "REMOTE_CAPTURED|OK",
    "PRIME_DONE|OK",
    "SAVE_DEST|card",
    "FILE_TYPE|raw",
    "READY|OK",
    "CPP_WORKER|START sony-1.0",
    "DOWNLOAD_DIR|/elsewhere",
    "ERROR|Camera not connected",
    "ERROR|Camera reported 0x00000001",
    "ERROR|Could not set the download folder (0x00000001)",
    "LOG|[SONY] could not set the save destination (0x00000001)",
    "LOG|[SONY] warning 0x00000001",
    "LOG|[SONY] landed y.JPG",
    "DOWNLOADED|/shots/.incoming/run-1/y.JPG",
    "DOWNLOADED|/etc/passwd",
    "",
};

TEST(BrainForging, ANameWithALineInItChangesNothingButBringsItsPicture) {
    for (const std::string& forged : forged_lines) {
        ReadyStage stage;
        const SessionState before = stage.state();
        stage.file("x.JPG\n" + forged + "\nz.JPG");
        stage.after(seconds(10));
        EXPECT_EQ(stage.state(), before) << forged;
        EXPECT_EQ(stage.states(), States{}) << forged;
        EXPECT_TRUE(stage.problems().empty()) << forged;
        ASSERT_EQ(stage.pictures().size(), 1U) << forged;
        EXPECT_EQ(stage.pictures()[0].camera_name.substr(0, 6), "x.JPG\n") << forged;
    }
}

TEST(BrainForging, AllLinesInOneNameChangeNothingDuringAShot) {
    ReadyStage stage;
    std::string name = "DSC00001";
    for (const std::string& forged : forged_lines) {
        name += "\n" + forged;
    }
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(500));
    stage.forget();
    stage.file(name + ".JPG");
    stage.after(milliseconds(300));
    EXPECT_EQ(stage.states(), States{});
    EXPECT_TRUE(stage.problems().empty());
    EXPECT_EQ(stage.pictures().size(), 1U);
    EXPECT_FALSE(stage.is_answered(capture));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainForging, AForgedFenceDoesNotFireTheNextShot) {
    ReadyStage stage;
    stage.ask(Capture{});
    stage.after(milliseconds(1));
    stage.file("x\nREMOTE_CAPTURED|OK\nPRIME_DONE|OK\n.JPG");
    stage.ask(Capture{});
    stage.after(milliseconds(400));
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U);
    EXPECT_EQ(stage.shots().back().status, ShotStatus::fired);
}

TEST(BrainForging, ALossThatANameForgesTooLateToBeSeenIsFoundByTheProbe) {
    ReadyStage stage;
    stage.hear("LOG|[SONY] landed x");
    stage.hear("DISCONNECTED|");
    stage.after(seconds(1));
    stage.hear("DOWNLOADED|/shots/.incoming/run-1/x%0ADISCONNECTED%7C");
    stage.after(seconds(1));
    EXPECT_EQ(stage.states(), States{});
}

TEST(BrainForging, AReportOutsideTheStagingFolderIsRefused) {
    ReadyStage stage;
    stage.say_landed("a.JPG", "/elsewhere/");
    stage.after(milliseconds(20));
    EXPECT_TRUE(stage.told(Code::picture_outside));
    EXPECT_TRUE(stage.asked_of_disk<Place>().empty());
    EXPECT_TRUE(stage.pictures().empty());
}

TEST(BrainForging, APathThatNoFileCanHaveIsNotAskedAbout) {
    ReadyStage stage;
    stage.hear("DOWNLOADED|/" + std::string(60'000, 'x'));
    stage.after(milliseconds(20));
    EXPECT_TRUE(stage.asked_of_disk<Examine>().empty());
    EXPECT_TRUE(stage.told(Code::picture_not_there));
}

TEST(BrainForging, LinesThatNobodyKnowsChangeNothing) {
    ReadyStage stage;
    for (const std::string line :
         {"", "|", "CONNECTED", "DISCONNECTED", "DISCONNECTED|x", "SAVE_DEST|", "SAVE_DEST|Disk",
          "FILE_TYPE|JPEG", "PRIME_DONE|", "READY|", "nonsense", "LOG|", "LOG|[SONY] 0x", "ERROR|",
          "REMOTE_CAPTURED|no", "LOG|[SONY] warning 0xZZZZZZZZ", "PRIME_DONE|OK"}) {
        stage.hear(line);
    }
    stage.hear(std::string("DOWNLOADED|\0\xff", 13));
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.state().save_destination.in_force, SaveDestination::disk);
}

}  // namespace
}  // namespace host::brain
