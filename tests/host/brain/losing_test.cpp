// A session that is lost, or seems to be.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

TEST(BrainLosing, ALossIsProbedBeforeItIsBelieved) {
    ReadyStage stage;
    stage.hear("CONNECTED|MODEL-A");
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    stage.lose();
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|disk", "PRIME"}));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.times_said("PRIME"), 1U) << "what was heard before it counts for nothing";
    EXPECT_EQ(stage.state().state, State::lost);
    EXPECT_EQ(stage.state().problems,
              (std::vector<Problem>{{Code::camera_lost, "The camera went away.", {}, {}}}));
    EXPECT_EQ(stage.state().save_destination.in_force, std::nullopt);
    EXPECT_EQ(stage.state().file_type.in_force, std::nullopt);
}

TEST(BrainLosing, ALossThatTheProbeDoesNotFindChangesNothing) {
    ReadyStage stage;
    stage.hear("DISCONNECTED|");
    stage.after(seconds(1));
    EXPECT_EQ(stage.states(), States{});
    EXPECT_TRUE(stage.problems().empty());
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainLosing, ACameraThatTheSdkBringsBackWithin4SecondsIsSettledAgain) {
    ReadyStage stage;
    stage.lose();
    stage.after(seconds(3));
    stage.bring_back();
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.states(), (States{State::lost, State::settling, State::ready}));
    EXPECT_FALSE(stage.said("DISCONNECT"));
    EXPECT_FALSE(stage.stands(Code::camera_lost));
}

TEST(BrainLosing, OneThatStaysAwayIsClosedAndOpenedAnewForAsLongAsItTakes) {
    ReadyStage stage;
    stage.unplug();
    stage.after(seconds(5));
    EXPECT_EQ(stage.states(), (States{State::lost, State::closing, State::idle, State::opening,
                                      State::closing, State::idle}));
    EXPECT_EQ(stage.state().camera, std::nullopt);
    EXPECT_EQ(stage.state().problems,
              (std::vector<Problem>{{Code::camera_not_found, "No camera was found.", {}, {}}}))
        << "one thing at a time is wrong with the camera";
    stage.after(minutes(10));
    stage.camera_there = true;
    stage.after(seconds(9));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainLosing, SettingsAreAskedAgainAfterALoss) {
    ReadyStage stage(wishes(SaveDestination::disk, FileType::raw));
    stage.session = false;
    stage.dial = "jpeg";
    stage.hear("DISCONNECTED|");
    stage.after(seconds(1));
    stage.bring_back();
    stage.hear("FILE_TYPE|jpeg");
    stage.after(seconds(1));
    EXPECT_TRUE(stage.said("SET_FILE_TYPE|raw"));
    EXPECT_EQ(stage.state().file_type.in_force, FileType::raw);
}

TEST(BrainLosing, TwoLinesForOneLossAreOneLoss) {
    ReadyStage stage;
    stage.lose();
    stage.hear("DISCONNECTED|");
    EXPECT_EQ(stage.times_said("PRIME"), 1U);
    stage.after(seconds(1));
    EXPECT_EQ(stage.states(), (States{State::lost}));
    EXPECT_EQ(stage.problems().size(), 1U);
    stage.bring_back();
    stage.hear("DISCONNECTED|");
    stage.after(seconds(1));
    EXPECT_EQ(stage.states(), (States{State::lost, State::settling, State::ready}));
}

TEST(BrainLosing, ALossThatIsHeardWhileOneIsProbedIsProbedBehindIt) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.hear("DISCONNECTED|");
    stage.hear("SAVE_DEST|disk");
    stage.hear("DISCONNECTED|");
    stage.forget();
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|disk", "PRIME"}));
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::lost);
}

TEST(BrainLosing, ACameraThatIsBackBeforeTheProbeIsAnsweredIsSettledAgain) {
    ReadyStage stage;
    stage.hear("DISCONNECTED|");
    stage.hear("CONNECTED|MODEL-A");
    stage.after(seconds(1));
    EXPECT_EQ(stage.states(), (States{State::settling, State::ready}));
}

TEST(BrainLosing, ACameraThatIsBackBehindTheProbesBackIsNotTakenForLost) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.hear("DISCONNECTED|");
    // The destination was sent before the camera was back, and so was not answered.
    stage.hear("CONNECTED|MODEL-A");
    stage.forget();
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|disk", "PRIME"}));
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::settling);
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::lost) << "it went away again";
}

TEST(BrainLosing, AConnectedThatNoSessionIsBehindIsAskedAboutOnce) {
    ReadyStage stage;
    stage.lose();
    stage.hear("CONNECTED|MODEL-A");
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|disk", "PRIME", "SET_SAVE_DEST|disk", "PRIME"}));
    EXPECT_EQ(stage.states(), States{State::lost});
    stage.hear("CONNECTED|MODEL-A");
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.states(), (States{State::lost, State::settling, State::lost}));
}

TEST(BrainLosing, AConnectedThatComesAfterTheProbeFoundASessionSettlesItAgain) {
    ReadyStage stage;
    stage.hear("DISCONNECTED|");
    stage.after(milliseconds(1));
    for (int line = 0; line < 2; ++line) {
        stage.hear("CONNECTED|MODEL-A");
        stage.after(milliseconds(1));
    }
    EXPECT_EQ(stage.states(), (States{State::settling, State::ready})) << "once";
}

TEST(BrainLosing, AConnectedThatComesAfterTheProbeIsNotBelievedEither) {
    ReadyStage stage;
    stage.hear("DISCONNECTED|");
    stage.after(milliseconds(1));
    stage.session = false;
    stage.hear("CONNECTED|MODEL-A");
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.states(), (States{State::settling, State::lost}));
}

TEST(BrainLosing, NoShotIsFiredWhileALossIsProbed) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.hear("DISCONNECTED|");
    stage.ask(Capture{});
    stage.after(seconds(1));
    EXPECT_FALSE(stage.said("CAPTURE"));
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    EXPECT_TRUE(stage.said("CAPTURE"));
}

TEST(BrainLosing, AShotWhoseLookAtTheFolderEndsWhileALossIsProbedIsFiredBehindIt) {
    ReadyStage stage;
    stage.disk_answers = false;
    stage.ask(Capture{});
    stage.worker_answers = false;
    stage.hear("DISCONNECTED|");
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.said("CAPTURE"));
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    EXPECT_TRUE(stage.said("CAPTURE"));
}

TEST(BrainLosing, AShotThatIsLostWithTheCameraIsOver) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    stage.lose();
    stage.after(milliseconds(1));
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::none);
    EXPECT_EQ(shot.problems.at(0).code, Code::camera_lost);
    EXPECT_EQ(shot.problems.at(0).shot, shot.number);
}

TEST(BrainLosing, AFileThatWasReportedBeforeTheLossStillCounts) {
    for (const std::string dial : {"jpeg", "both"}) {
        ReadyStage stage(Dial{dial});
        const RequestId capture = stage.shoot();
        stage.disk_answers = false;
        stage.file("DSC00001.JPG");
        stage.lose();
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.state().state, State::lost);
        EXPECT_FALSE(stage.is_answered(capture));
        stage.disk_answers = true;
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.answer_to<Shot>(capture).status,
                  dial == "jpeg" ? ShotStatus::complete : ShotStatus::incomplete);
    }
}

TEST(BrainLosing, AnErrorInMidSessionIsToldAndIsNoLoss) {
    ReadyStage stage;
    stage.hear("LOG|[SONY] error 0x000000FF");
    stage.hear("ERROR|Camera reported 0x000000FF");
    stage.after(seconds(1));
    EXPECT_EQ(
        stage.problems(),
        (std::vector<Problem>{{Code::camera_error, "The camera reported an error.", 0xFF, {}}}));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainLosing, ALooseCableEndsInAReadySession) {
    ReadyStage stage;
    for (int loss = 0; loss < 1000; ++loss) {
        stage.hear("DISCONNECTED|");
        stage.hear("CONNECTED|MODEL-A");
        stage.hear("FILE_TYPE|jpeg");
        stage.hear("SAVE_DEST|disk");
    }
    stage.after(seconds(2));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_LT(stage.said().size(), 10'000U);
}

}  // namespace
}  // namespace host::brain
