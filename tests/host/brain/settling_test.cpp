// Destination and type in force are what was asked, or a problem says which is not.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

TEST(BrainSettling, TheCamerasOwnTypeIsLeftAloneWhenNoneWasAsked) {
    ReadyStage stage(Dial{"raw"});
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{{}, FileType::raw}));
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
    EXPECT_EQ(stage.standing(Code::destination_not_taken).sdk, 0x8000U);
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

TEST(BrainSettling, AMissingCardIsToldAndWhatIsInForceIsToldApart) {
    Stage stage(wishes(SaveDestination::both));
    stage.card = false;
    stage.get_ready();
    EXPECT_TRUE(stage.stands(Code::card_missing));
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
    stage.hear(
        "LOG|[SONY] could not ask for both halves of a RAW pair (0x00008402) — the camera "
        "sends its own choice");
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
