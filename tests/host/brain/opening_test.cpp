// A session with a camera, and every way in which it does not come.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

// One whose camera has not answered for so long.
class OpeningStage : public Stage {
  public:
    explicit OpeningStage(Time so_far) {
        camera_answers = false;
        get_idle();
        ask(Connect{});
        after(so_far);
    }
};

TEST(BrainOpening, NoCameraIsAProblemAndTriedAgainWithABackOff) {
    Stage stage;
    stage.camera_there = false;
    stage.get_idle();
    stage.ask(Connect{});
    std::vector<Time> tries;
    const Time begin = stage.now;
    for (std::size_t seen = 0; stage.now < begin + seconds(40);) {
        for (const std::size_t connects = stage.times_said("CONNECT"); seen < connects; ++seen) {
            tries.push_back(stage.now - begin);
        }
        stage.after(milliseconds(100));
    }
    EXPECT_EQ(tries, (std::vector<Time>{{},
                                        milliseconds(500),
                                        milliseconds(1500),
                                        milliseconds(3500),
                                        milliseconds(7500),
                                        milliseconds(15500),
                                        milliseconds(23500),
                                        milliseconds(31500),
                                        milliseconds(39500)}));
    EXPECT_TRUE(stage.stands(Code::camera_not_found));
    EXPECT_EQ(stage.problems().size(), 1U) << "the same problem is told once";
    stage.camera_there = true;
    stage.after(seconds(8));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_FALSE(stage.stands(Code::camera_not_found));
}

TEST(BrainOpening, ConnectTriesAtOnceHoweverLongTheNextTryWasToBeWaitedFor) {
    Stage stage;
    stage.camera_there = false;
    stage.ask(Connect{});
    stage.after(seconds(10));
    stage.forget();
    stage.ask(Connect{});
    stage.after(milliseconds(501));
    EXPECT_EQ(stage.times_said("CONNECT"), 2U) << "the pauses begin anew";
    stage.camera_there = true;
    stage.ask(Connect{});
    stage.after(milliseconds(100));
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainOpening, AFailedOpeningIsClosedAndFencedBeforeTheNext) {
    Stage stage;
    stage.camera_there = false;
    stage.get_idle();
    stage.ask(Connect{});
    stage.after(milliseconds(100));
    EXPECT_EQ(stage.said(), (Lines{"CONNECT", "PRIME", "DISCONNECT", "PRIME"}));
    EXPECT_EQ(stage.states(), (States{State::opening, State::closing, State::idle}));
}

TEST(BrainOpening, ConnectIsAnsweredAfter60SecondsByWhatStandsInTheWayAndGoesOnTrying) {
    Stage stage;
    stage.camera_there = false;
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(1));
    const RequestId second = stage.ask(Connect{});
    stage.after(milliseconds(58'999));
    EXPECT_FALSE(stage.is_answered(connect));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Problem>(connect),
              (Problem{Code::camera_not_found, "No camera was found.", {}, {}}));
    EXPECT_FALSE(stage.is_answered(second));
    stage.after(seconds(1));
    EXPECT_EQ(stage.answer_to<Problem>(second).code, Code::camera_not_found);
    stage.camera_there = true;
    stage.after(seconds(9));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.answers(connect), 1U);
}

TEST(BrainOpening, AnOpeningThatFailsIsToldWithItsCodeAndAnsweredByDisconnect) {
    struct Failure {
        Lines lines;
        Problem problem;
    };
    for (const Failure& failure : {
             Failure{{"ERROR|Could not open the camera (0x00008208)"},
                     {Code::camera_refused,
                      "The camera could not be opened; another program may use it.",
                      0x8208,
                      {}}},
             Failure{{"LOG|[SONY] error 0x000000FF", "ERROR|Camera reported 0x000000FF"},
                     {Code::camera_error,
                      "The camera reported an error while it was opened.",
                      0xFF,
                      {}}},
             Failure{{"DISCONNECTED|"},
                     {Code::camera_lost, "The camera went away while it was opened.", {}, {}}},
         }) {
        OpeningStage stage(milliseconds(50));
        for (const std::string& line : failure.lines) {
            stage.hear(line);
        }
        EXPECT_EQ(stage.standing(failure.problem.code), failure.problem);
        EXPECT_TRUE(stage.said("DISCONNECT")) << failure.problem.text;
    }
}

TEST(BrainOpening, ACameraThatWentAwayWhileItWasOpenedIsNotSettled) {
    Stage stage;
    stage.get_idle();
    stage.worker_answers = false;
    stage.ask(Connect{});
    for (const std::string line : {"CONNECTED|MODEL-A", "DISCONNECTED|", "PRIME_DONE|OK"}) {
        stage.hear(line);
    }
    EXPECT_EQ(stage.state().state, State::closing);
    EXPECT_TRUE(stage.stands(Code::camera_lost));
}

TEST(BrainOpening, SilenceIsGivenUpAfter30Seconds) {
    OpeningStage stage(seconds(29));
    stage.ask(Connect{});  // which changes nothing
    stage.hear("ERROR|Unknown command");
    stage.after(milliseconds(999));
    EXPECT_EQ(stage.state().state, State::opening);
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.standing(Code::camera_no_answer).text, "The camera does not answer.");
    EXPECT_TRUE(stage.said("DISCONNECT"));
}

TEST(BrainOpening, AConnectedThatCrossesTheTimeOutLeadsToASessionAllTheSame) {
    OpeningStage stage(seconds(20));
    stage.hear("ERROR|Could not open the camera (timeout) — replug the camera");
    EXPECT_EQ(stage.standing(Code::camera_no_answer).text, "The camera does not answer.");
    stage.camera_answers = true;
    stage.hear("CONNECTED|MODEL-A");
    stage.after(seconds(2));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainOpening, AHandleThatIsOutAlreadyIsGivenBackWhenNoSessionAnswers) {
    OpeningStage stage(milliseconds(50));
    stage.hear("CONNECTED|already");
    stage.camera_answers = true;
    stage.after(seconds(2));
    EXPECT_TRUE(stage.said("DISCONNECT"));
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainOpening, ASessionThatIsUpAlreadyIsTaken) {
    OpeningStage stage(milliseconds(50));
    stage.session = true;
    stage.hear("CONNECTED|already");
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.state().camera, "Camera") << "its name was not told";
    EXPECT_FALSE(stage.said("DISCONNECT"));
}

TEST(BrainOpening, ACameraNameThatForgesAnAnswerComesToNothing) {
    for (const std::string forged :
         {"CONNECTED|x", "ERROR|Camera not detected", "DISCONNECTED|", "SAVE_DEST|card",
          "FILE_TYPE|raw", "PRIME_DONE|OK", "ERROR|Could not open the camera (0x00000001)"}) {
        Stage stage;
        stage.get_idle();
        stage.camera_name = "X\n" + forged + "\nY";
        stage.ask(Connect{});
        // The worker's log line is split by the name; everything else goes on as usual.
        stage.after(seconds(3));
        EXPECT_EQ(stage.state().state, State::ready) << forged;
        EXPECT_EQ(stage.state().camera, stage.camera_name) << forged;
        EXPECT_EQ(stage.state().save_destination.in_force, SaveDestination::disk) << forged;
        EXPECT_EQ(stage.state().file_type.in_force, FileType::jpeg) << forged;
    }
}

TEST(BrainOpening, ACameraNameThatForgesAWholeSessionIsFoundByTheProbe) {
    Stage stage;
    stage.camera_answers = false;
    stage.get_idle();
    stage.camera_name = "X\nPRIME_DONE|OK\nCONNECTED|X\nSAVE_DEST|disk\nFILE_TYPE|jpeg\n";
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(5));
    EXPECT_NE(stage.state().state, State::ready);
    EXPECT_FALSE(stage.is_answered(connect));
    // The real answer comes after all.
    stage.session = true;
    stage.hear("CONNECTED|X");
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainOpening, AConnectedThatNoSessionIsBehindIsAskedAboutOnce) {
    OpeningStage stage(milliseconds(50));
    stage.hear("CONNECTED|X");
    stage.after(seconds(6));
    EXPECT_EQ(stage.state().state, State::opening);
    EXPECT_EQ(stage.times_said("SET_SAVE_DEST|disk"), 1U);
}

TEST(BrainOpening, DisconnectWhileOpeningClosesAtOnce) {
    Stage stage;
    stage.camera_answers = false;
    stage.get_idle();
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(1));
    const RequestId disconnect = stage.ask(Disconnect{});
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Problem>(connect),
              (Problem{Code::cancelled, "Disconnected meanwhile.", {}, {}}));
    EXPECT_EQ(stage.answer_to<SessionState>(disconnect).state, State::idle);
    EXPECT_EQ(stage.brain.wake_at() - stage.now, seconds(1)) << "no next try is due";
    stage.after(seconds(20));
    EXPECT_EQ(stage.state().state, State::idle) << "nothing is tried again";
}

TEST(BrainOpening, DisconnectIsAnsweredInEveryState) {
    {
        Stage stage;
        EXPECT_EQ(stage.answer_to<SessionState>(stage.ask(Disconnect{})).state, State::down);
    }
    {
        Stage stage;
        stage.get_idle();
        EXPECT_EQ(stage.answer_to<SessionState>(stage.ask(Disconnect{})).state, State::idle);
    }
    {
        ReadyStage stage;
        const RequestId request = stage.ask(Disconnect{});
        stage.after(milliseconds(1));
        const auto state = stage.answer_to<SessionState>(request);
        EXPECT_EQ(state.state, State::idle);
        EXPECT_EQ(state.camera, std::nullopt);
        EXPECT_EQ(state.save_destination, (Setting<SaveDestination>{SaveDestination::disk, {}}));
        EXPECT_EQ(state.file_type, Setting<FileType>{});
    }
}

TEST(BrainOpening, WhatIsSoAlreadyIsAnsweredAtOnce) {
    ReadyStage stage;
    EXPECT_EQ(stage.answer_to<SessionState>(stage.ask(Start{})).state, State::ready);
    EXPECT_EQ(stage.answer_to<SessionState>(stage.ask(Connect{})).state, State::ready);
}

TEST(BrainOpening, WhatWasHeardBeforeTheCameraIsOpenedStoodInItsName) {
    for (const std::string forged : {"CONNECTED|already", "ERROR|Camera not detected"}) {
        Stage stage;
        stage.get_idle();
        stage.worker_answers = false;
        stage.ask(Connect{});
        stage.hear(forged);
        stage.hear("STATUS|Opening camera session");
        stage.hear("PRIME_DONE|OK");
        EXPECT_EQ(stage.state().state, State::opening) << forged;
    }
    Stage stage;
    stage.get_idle();
    stage.worker_answers = false;
    stage.ask(Connect{});
    stage.hear("FILE_TYPE|raw");
    stage.hear("STATUS|Opening camera session");
    stage.hear("CONNECTED|MODEL-A");
    stage.hear("STATUS|No memory card in the camera — saving to the computer only");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::settling) << "what is heard behind it did not";
    EXPECT_EQ(stage.state().file_type.in_force, std::nullopt);
}

TEST(BrainOpening, DisconnectWaitsForTheShotButNotForLong) {
    ReadyStage stage;
    for (int time = 0; time < 2; ++time) {
        const RequestId capture = stage.ask(Capture{});
        const RequestId disconnect = stage.ask(Disconnect{});
        EXPECT_EQ(stage.outcome(stage.ask(Capture{})),
                  (Outcome{ShotStatus::refused, Code::not_connected}));
        stage.after(milliseconds(9'950));
        stage.ask(Disconnect{});
        EXPECT_FALSE(stage.said("DISCONNECT"));
        EXPECT_EQ(stage.brain.wake_at(), stage.now + milliseconds(50));
        stage.after(seconds(2));
        const Shot shot = stage.answer_to<Shot>(capture);
        EXPECT_EQ(shot.status, ShotStatus::none);
        EXPECT_EQ(
            shot.problems,
            (std::vector<Problem>{{Code::cancelled, "Disconnected meanwhile.", {}, shot.number}}));
        EXPECT_EQ(stage.answer_to<SessionState>(disconnect).state, State::idle);
        stage.get_ready();
    }
}

TEST(BrainOpening, DisconnectOfAHangingWorkerIsAnsweredIn20Seconds) {
    {
        ReadyStage stage;
        stage.worker_answers = false;
        stage.worker_ends = false;
        const RequestId disconnect = stage.ask(Disconnect{});
        stage.after(seconds(21));
        EXPECT_EQ(stage.answers(disconnect), 1U);
    }
    {
        ReadyStage stage;
        stage.shoot();
        const RequestId disconnect = stage.ask(Disconnect{});
        stage.after(seconds(9));
        stage.worker_answers = false;  // the shot is given up a second later
        stage.after(milliseconds(10'999));
        EXPECT_FALSE(stage.is_answered(disconnect));
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.answer_to<Problem>(disconnect),
                  (Problem{Code::not_connected, "No camera is connected.", {}, {}}));
    }
}

TEST(BrainOpening, NothingIsWrongWithACameraThatNobodyAsksForAnyMore) {
    {
        Stage stage;
        stage.camera_there = false;
        stage.ask(Connect{});
        stage.after(seconds(3));
        ASSERT_EQ(stage.state().state, State::idle);
        ASSERT_TRUE(stage.stands(Code::camera_not_found));
        const RequestId disconnect = stage.ask(Disconnect{});
        EXPECT_TRUE(stage.answer_to<SessionState>(disconnect).problems.empty());
        EXPECT_EQ(stage.brain.wake_at() - stage.now, seconds(1)) << "no next try is due";
    }
    {
        Stage stage;
        stage.camera_there = false;
        stage.ask(Connect{});
        stage.after(milliseconds(1));
        stage.worker_answers = false;
        stage.after(milliseconds(500));
        stage.after(milliseconds(500));
        stage.hear("ERROR|Camera not detected");
        stage.hear("PRIME_DONE|OK");
        ASSERT_EQ(stage.state().state, State::closing);
        ASSERT_TRUE(stage.stands(Code::camera_not_found));
        const RequestId disconnect = stage.ask(Disconnect{});
        EXPECT_TRUE(stage.state().problems.empty());
        stage.hear("PRIME_DONE|OK");
        EXPECT_TRUE(stage.answer_to<SessionState>(disconnect).problems.empty());
    }
}

TEST(BrainOpening, WithTheCameraGoWhatItsSettingsLacked) {
    Stage stage(wishes(SaveDestination::both));
    stage.card = false;
    stage.takes_type = false;
    stage.get_ready();
    stage.ask(type(FileType::raw));
    stage.after(seconds(2));
    ASSERT_TRUE(stage.stands(Code::card_missing));
    ASSERT_TRUE(stage.stands(Code::file_type_not_taken));
    const RequestId disconnect = stage.ask(Disconnect{});
    EXPECT_TRUE(stage.state().problems.empty()) << "also while the session is closed";
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.answer_to<SessionState>(disconnect).problems.empty());
}

TEST(BrainOpening, TheNextCameraMayTakeTheFolderAndGiveOlderNames) {
    ReadyStage stage;
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    stage.shoot();
    stage.file("DSC00009.JPG");
    stage.ask(Disconnect{});
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.stands(Code::folder_not_taken));
    stage.get_ready();
    EXPECT_TRUE(stage.state().problems.empty());
    stage.shoot();
    stage.after(seconds(21));  // without a file: from now on a late one is reckoned with
    const RequestId third = stage.shoot();
    stage.file("DSC00001.JPG");
    stage.after(seconds(3));
    EXPECT_EQ(stage.answer_to<Shot>(third).status, ShotStatus::complete);
}

TEST(BrainOpening, ConnectBehindADisconnectThatWaitsIsAnsweredByTheNextSession) {
    ReadyStage stage;
    const RequestId shot = stage.shoot();
    const RequestId disconnect = stage.ask(Disconnect{});
    const RequestId connect = stage.ask(Connect{});
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.is_answered(connect)) << "this session is about to end";
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(shot).status, ShotStatus::complete);
    EXPECT_TRUE(stage.said("DISCONNECT"));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.after(milliseconds(479));
    EXPECT_FALSE(stage.said("CONNECT")) << "sooner than 0.5 s after the session before";
    stage.after(seconds(2));
    EXPECT_EQ(stage.answers(disconnect), 1U);
    EXPECT_EQ(stage.answer_to<SessionState>(connect).state, State::ready);
    stage.file("DSC00002.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

}  // namespace
}  // namespace host::brain
