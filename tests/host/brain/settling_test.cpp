// Destination and type in force are what was asked, or a problem says which is not.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

constexpr auto pair_refused =
    "LOG|[SONY] could not ask for both halves of a RAW pair (0x00008402) — the camera sends its "
    "own choice";

Configure destination(SaveDestination value) {
    Configure configure;
    configure.save_destination = value;
    return configure;
}

TEST(BrainSettling, TheCamerasOwnTypeIsLeftAloneWhenNoneWasAsked) {
    ReadyStage stage(Dial{"raw"});
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{{}, FileType::raw}));
    stage.hear("FILE_TYPE|jpeg");
    stage.ask(destination(SaveDestination::both));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{{}, FileType::jpeg}));
}

TEST(BrainSettling, ASettingIsToldWhenItIsAnotherAndTheCameraWasAskedForIt) {
    ReadyStage stage(wishes(SaveDestination::both));
    for (const std::string same :
         {"SAVE_DEST|both", "SAVE_DEST|tape", "FILE_TYPE|jpeg", "FILE_TYPE|film"}) {
        stage.hear(same);
        EXPECT_EQ(stage.states(), States{}) << same;
    }
    for (const std::string other : {"SAVE_DEST|card", "FILE_TYPE|raw"}) {
        stage.forget();
        stage.hear(other);
        EXPECT_EQ(stage.states(), States{State::ready}) << other;
    }
    stage.lose();
    stage.after(milliseconds(1));
    stage.hear("FILE_TYPE|both");
    stage.hear("SAVE_DEST|disk");
    EXPECT_EQ(stage.state().file_type.in_force, FileType::both) << "just before it is back";
    EXPECT_FALSE(stage.told(Code::card_missing)) << "that is asked when it is back";

    Stage idle;
    idle.get_idle();
    idle.hear("SAVE_DEST|card");
    idle.hear("FILE_TYPE|raw");
    EXPECT_EQ(idle.states(), States{});
    idle.worker_answers = false;
    idle.ask(Connect{});
    idle.hear("FILE_TYPE|raw");
    idle.hear("FILE_TYPE|film");
    idle.hear("PRIME_DONE|OK");
    idle.hear("CONNECTED|MODEL-A");
    EXPECT_EQ(idle.state().file_type.in_force, FileType::raw);
}

TEST(BrainSettling, WhatIsHeardBeforeTheDestinationWasAskedIsNoProblem) {
    Stage stage(wishes(SaveDestination::both));
    stage.get_idle();
    stage.worker_answers = false;
    stage.ask(Connect{});
    stage.hear("PRIME_DONE|OK");
    stage.hear("CONNECTED|MODEL-A");
    stage.hear("SAVE_DEST|disk");
    stage.hear("SAVE_DEST|both");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainSettling, AConnectedThatNoSessionIsBehindLeavesTheCameraItsTimeAndNoMore) {
    for (const Time heard : {milliseconds(50), milliseconds(29'980)}) {
        Stage stage;
        stage.camera_answers = false;
        stage.get_idle();
        stage.ask(Connect{});
        stage.after(heard);
        stage.worker_answers = false;
        stage.hear("CONNECTED|X");
        EXPECT_EQ(stage.state().camera, "X");
        stage.after(milliseconds(20));
        stage.hear("PRIME_DONE|OK");
        if (heard < seconds(29)) {
            EXPECT_EQ(stage.states(), (States{State::opening, State::settling, State::opening}));
            EXPECT_EQ(stage.state().camera, std::nullopt);
            stage.worker_answers = true;
            stage.after(milliseconds(29'929));
            EXPECT_EQ(stage.state().state, State::opening);
            stage.worker_answers = false;
            stage.after(milliseconds(1));
        }
        EXPECT_EQ(stage.state().state, State::closing);
        EXPECT_EQ(stage.problems(),
                  (std::vector<Problem>{
                      {Code::camera_no_answer, "The camera does not answer.", {}, {}}}));
        EXPECT_EQ(stage.times_said("CONNECT"), 1U);
    }
}

TEST(BrainSettling, ATypeThatIsToldDuringAShotLeavesItOpenWhatIsDueOnlyIfItIsAnother) {
    for (const Time moment : {milliseconds(100), milliseconds(800)}) {
        for (const std::string told : {"jpeg", "raw"}) {
            ReadyStage stage;
            const RequestId shot = stage.ask(Capture{});
            stage.after(moment);
            stage.hear("FILE_TYPE|" + told);
            stage.after(milliseconds(800) - moment);
            stage.file("DSC00001.JPG");
            EXPECT_EQ(stage.is_answered(shot), told == "jpeg") << told;
        }
    }
}

TEST(BrainSettling, TheTypeIsAskedBeforeTheSessionIsReady) {
    Stage stage(wishes(SaveDestination::both, FileType::both));
    stage.get_idle();
    stage.ask(Connect{});
    stage.after(seconds(1));
    EXPECT_EQ(stage.said(), (Lines{"CONNECT", "PRIME", "SET_SAVE_DEST|both", "PRIME",
                                   "SET_FILE_TYPE|both", "PRIME"}));
    EXPECT_EQ(stage.state().file_type.in_force, FileType::both);
}

TEST(BrainSettling, ADestinationThatIsRefusedIsAskedFiveTimesThenAProblemWithTheCode) {
    Stage stage;
    stage.takes_destination = false;
    stage.get_idle();
    stage.ask(Connect{});
    stage.after(milliseconds(100));
    stage.tell(TimeOfDayIs{std::chrono::hours(1'000'000)});  // the fence behind sleep asks nothing
    stage.after(milliseconds(1110));
    EXPECT_EQ(stage.state().state, State::settling);
    EXPECT_FALSE(stage.told(Code::destination_not_taken));
    stage.after(milliseconds(20));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.standing(Code::destination_not_taken),
              (Problem{Code::destination_not_taken,
                       "The camera does not take the save destination.",
                       0x8000,
                       {}}));
    EXPECT_EQ(stage.state().save_destination,
              (Setting<SaveDestination>{SaveDestination::disk, {}}));
    EXPECT_EQ(stage.times_said("SET_SAVE_DEST|disk"), 5U);
}

TEST(BrainSettling, ATypeThatIsRefusedIsAskedFiveTimesThenAProblemWithTheCode) {
    Stage stage(wishes(SaveDestination::disk, FileType::raw));
    stage.takes_type = false;
    stage.get_idle();
    stage.ask(Connect{});
    stage.after(seconds(2));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.standing(Code::file_type_not_taken),
              (Problem{Code::file_type_not_taken,
                       "The camera does not take the file type: set it there.",
                       0x8402,
                       {}}));
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{FileType::raw, FileType::jpeg}));
    EXPECT_EQ(stage.times_said("SET_FILE_TYPE|raw"), 5U);
    stage.hear("FILE_TYPE|raw");
    EXPECT_FALSE(stage.stands(Code::file_type_not_taken)) << "somebody has set it there";
}

TEST(BrainSettling, ATypeOfWhichNothingIsHeardIsNotKnownAndAskedNextTime) {
    ReadyStage stage(wishes(SaveDestination::disk, FileType::jpeg));
    stage.type_readable = false;
    stage.ask(type(FileType::raw));
    stage.after(seconds(2));
    EXPECT_TRUE(stage.stands(Code::file_type_not_taken));
    EXPECT_EQ(stage.state().file_type.in_force, std::nullopt);
    stage.type_readable = true;
    stage.ask(type(FileType::jpeg));
    stage.after(seconds(1));
    EXPECT_EQ(stage.dial, "jpeg");
    EXPECT_EQ(stage.state().file_type.in_force, FileType::jpeg);
    EXPECT_FALSE(stage.stands(Code::file_type_not_taken));
}

TEST(BrainSettling, EachSettingThatIsNotTakenIsAskedFiveTimesAndIsAProblemWithACodeOfItsOwn) {
    ReadyStage stage;
    stage.takes_destination = false;
    stage.type_readable = false;
    Configure configure = destination(SaveDestination::both);
    configure.file_type = FileType::raw;
    stage.ask(configure);
    stage.after(seconds(3));
    EXPECT_EQ(stage.times_said("SET_SAVE_DEST|both"), 5U);
    EXPECT_EQ(stage.times_said("SET_FILE_TYPE|raw"), 5U);
    EXPECT_EQ(stage.standing(Code::destination_not_taken).sdk, 0x8000U);
    EXPECT_EQ(stage.standing(Code::file_type_not_taken).sdk, std::nullopt) << "nothing was heard";
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{FileType::raw, {}}));
    stage.type_readable = true;
    stage.takes_destination = true;
    stage.card = false;
    stage.ask(configure);
    stage.after(seconds(1));
    ASSERT_EQ(stage.state().problems.size(), 1U);
    EXPECT_TRUE(stage.stands(Code::card_missing));
    stage.card = true;
    stage.ask(configure);
    stage.after(seconds(1));
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainSettling, ATypeThatFoundNoSessionIsAskedBehindTheDestinationAndThenIn300Milliseconds) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.ask(type(FileType::raw));
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    stage.hear("ERROR|Camera not connected");
    stage.hear("PRIME_DONE|OK");
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    stage.hear("LOG|[SONY] the camera would not change its file type (0x00008402)");
    stage.hear("PRIME_DONE|OK");
    stage.after(milliseconds(299));
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|disk", "PRIME", "SET_FILE_TYPE|raw", "PRIME",
                                   "SET_SAVE_DEST|disk", "PRIME", "SET_FILE_TYPE|raw", "PRIME"}));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.times_said("SET_FILE_TYPE|raw"), 3U);
}

TEST(BrainSettling, ASessionThatIsReadyBeginsTheBackOffAnew) {
    Stage stage;
    stage.camera_there = false;
    stage.ask(Connect{});
    stage.after(seconds(4));
    stage.camera_there = true;
    stage.after(seconds(8));
    stage.forget();
    stage.unplug();
    stage.after(milliseconds(4'499));
    EXPECT_FALSE(stage.said("CONNECT"));
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.said("CONNECT"));
}

TEST(BrainSettling, AMissingCardIsToldAndWhatIsInForceIsToldApart) {
    Stage stage(wishes(SaveDestination::both));
    stage.card = false;
    stage.get_ready();
    EXPECT_EQ(stage.standing(Code::card_missing),
              (Problem{Code::card_missing,
                       "No memory card is in the camera: pictures come to the computer only.",
                       {},
                       {}}));
    EXPECT_FALSE(stage.stands(Code::destination_not_taken));
    EXPECT_EQ(stage.state().save_destination,
              (Setting<SaveDestination>{SaveDestination::both, SaveDestination::disk}));
}

TEST(BrainSettling, ACardThatComesOutWhileTheTypeIsAskedIsTold) {
    Stage stage(wishes(SaveDestination::both, FileType::raw));
    stage.takes_type = false;
    stage.get_idle();
    stage.ask(Connect{});
    stage.after(milliseconds(300));
    ASSERT_EQ(stage.state().state, State::settling);
    stage.hear("SAVE_DEST|disk");
    stage.after(seconds(2));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.state().save_destination,
              (Setting<SaveDestination>{SaveDestination::both, SaveDestination::disk}));
    EXPECT_TRUE(stage.stands(Code::card_missing));
}

TEST(BrainSettling, ADestinationThatIsRefusedWhileTheTypeIsAskedIsAProblemWithItsCode) {
    Stage stage(wishes(SaveDestination::both, FileType::raw));
    stage.takes_type = false;
    stage.get_idle();
    stage.ask(Connect{});
    stage.after(milliseconds(1219));
    stage.worker_answers = false;
    stage.after(milliseconds(1));
    ASSERT_EQ(stage.times_said("SET_FILE_TYPE|raw"), 5U);
    stage.hear("LOG|[SONY] the camera would not change its file type (0x00008402)");
    stage.hear(
        "LOG|[SONY] could not set the save destination (0x00008000) — the camera keeps its "
        "own setting");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.standing(Code::destination_not_taken).sdk, 0x8000U);
    EXPECT_EQ(stage.standing(Code::file_type_not_taken).sdk, 0x8402U);
}

TEST(BrainSettling, APairOfWhichTheCameraSendsOneHalfIsAProblemUntilItTakesTheRequest) {
    ReadyStage stage(Dial{"both"});
    stage.hear("FILE_TYPE|both");
    stage.hear(pair_refused);
    EXPECT_EQ(stage.standing(Code::file_type_not_taken),
              (Problem{Code::file_type_not_taken,
                       "The camera does not take the request for both halves of a pair: it sends "
                       "one of them.",
                       0x8402,
                       {}}));
    stage.hear("DISCONNECTED|");
    stage.hear("CONNECTED|MODEL-A");
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.stands(Code::file_type_not_taken)) << "nothing was asked again";
    const RequestId shot = stage.shoot();
    stage.after(milliseconds(100));
    stage.file("DSC00001.JPG");
    stage.after(seconds(21));
    const Shot over = stage.answer_to<Shot>(shot);
    ASSERT_EQ(over.problems.size(), 1U);
    EXPECT_EQ(over.problems.front().code, Code::half_missing);
    EXPECT_EQ(over.problems.front().sdk, 0x8402U);
    stage.ask(type(FileType::both));
    stage.after(seconds(1));
    EXPECT_TRUE(stage.said("SET_FILE_TYPE|both"));
    EXPECT_FALSE(stage.stands(Code::file_type_not_taken));
}

TEST(BrainSettling, APairThatIsRefusedIsNoProblemAnyMoreWithAnotherDialOrAnotherSession) {
    for (const std::optional<FileType> asked : {std::optional<FileType>(), {FileType::both}}) {
        Stage stage(wishes(SaveDestination::disk, asked));
        stage.dial = "both";
        stage.get_ready();
        stage.hear(pair_refused);
        stage.hear("FILE_TYPE|jpeg");
        EXPECT_EQ(stage.stands(Code::file_type_not_taken), asked.has_value());
    }
    ReadyStage stage(Dial{"both"});
    stage.hear(pair_refused);
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    EXPECT_TRUE(stage.stands(Code::file_type_not_taken));
    stage.after(seconds(2));
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainSettling, APairThatIsRefusedEachTimeItIsAskedIsInForceAndAProblem) {
    ReadyStage stage(wishes(SaveDestination::disk, FileType::both));
    stage.hear(pair_refused);
    const Problem refused = stage.standing(Code::file_type_not_taken);
    stage.worker_answers = false;
    stage.ask(type(FileType::both));
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    for (std::size_t asked = 1; asked <= 5; ++asked) {
        EXPECT_EQ(stage.times_said("SET_FILE_TYPE|both"), asked);
        stage.hear("FILE_TYPE|both");
        stage.hear(pair_refused);
        stage.hear("PRIME_DONE|OK");
        stage.after(milliseconds(300));
    }
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.state().file_type.in_force, FileType::both);
    EXPECT_EQ(stage.standing(Code::file_type_not_taken), refused);
}

TEST(BrainSettling, APairThatWasRefusedIsForgottenWithItsSession) {
    ReadyStage stage(Dial{"both"});
    stage.hear(pair_refused);
    stage.ask(Disconnect{});
    stage.after(milliseconds(1));
    stage.get_ready();
    const RequestId shot = stage.shoot();
    stage.file("DSC00001.JPG");
    stage.after(seconds(21));
    EXPECT_EQ(
        stage.answer_to<Shot>(shot).problems,
        (std::vector<Problem>{{Code::half_missing, "Only one half of the shot came.", {}, 1}}));
}

TEST(BrainSettling, ACardThatComesOutInMidShootIsToldAndClearedWhenOneGoesIn) {
    ReadyStage stage(wishes(SaveDestination::both));
    const RequestId capture = stage.shoot();
    stage.hear("LOG|[SONY] the memory card came out");
    stage.hear("STATUS|No memory card in the camera — saving to the computer only");
    stage.hear("SAVE_DEST|disk");
    EXPECT_TRUE(stage.stands(Code::card_missing));
    EXPECT_EQ(stage.state().save_destination.in_force, SaveDestination::disk);
    EXPECT_EQ(stage.state().state, State::ready);
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
    stage.hear("SAVE_DEST|both");
    EXPECT_FALSE(stage.stands(Code::card_missing));
    EXPECT_EQ(stage.state().save_destination.in_force, SaveDestination::both);
    stage.hear("SAVE_DEST|card");
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainSettling, ADialThatAPersonTurnsIsShownAndNotTurnedBack) {
    ReadyStage stage(wishes(SaveDestination::disk, FileType::jpeg));
    stage.hear("FILE_TYPE|other");
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{FileType::jpeg, FileType::other}));
    stage.after(seconds(30));
    EXPECT_FALSE(stage.said("SET_FILE_TYPE|jpeg"));
    EXPECT_TRUE(stage.state().problems.empty());
}

TEST(BrainSettling, ADestinationThatIsRefusedInMidSessionIsAProblem) {
    ReadyStage stage(wishes(SaveDestination::both));
    stage.hear("LOG|[SONY] a memory card went in");
    stage.hear(
        "LOG|[SONY] could not set the save destination (0x00008000) — the camera keeps its "
        "own setting");
    EXPECT_EQ(stage.standing(Code::destination_not_taken),
              (Problem{Code::destination_not_taken,
                       "The camera did not take the save destination again.",
                       0x8000,
                       {}}));
    stage.hear("SAVE_DEST|both");
    EXPECT_FALSE(stage.stands(Code::destination_not_taken));
}

TEST(BrainSettling, ALossWhileTheTypeIsAskedIsFoundWhenItIsAskedAgain) {
    for (const bool told : {true, false}) {
        Stage stage(wishes(SaveDestination::disk, FileType::raw));
        stage.takes_type = false;
        stage.get_idle();
        stage.ask(Connect{});
        stage.after(milliseconds(100));
        ASSERT_EQ(stage.state().state, State::settling);
        stage.session = false;
        if (told) {
            stage.hear("DISCONNECTED|");
        }
        stage.after(milliseconds(221));
        EXPECT_EQ(stage.state().state, State::lost) << told;
    }
}

TEST(BrainSettling, ALossWhileSettlingIsAskedAboutAndFound) {
    Stage stage;
    stage.get_idle();
    stage.worker_answers = false;
    stage.ask(Connect{});
    stage.after(milliseconds(1));
    stage.hear("PRIME_DONE|OK");
    stage.hear("CONNECTED|MODEL-A");
    stage.forget();
    stage.hear("SAVE_DEST|disk");
    stage.hear("DISCONNECTED|");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|disk", "PRIME"})) << "asked once more";
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.state().state, State::ready) << "it was a name's";
}

}  // namespace
}  // namespace host::brain
