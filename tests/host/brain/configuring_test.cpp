// Other settings, and another folder, in a running session.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

Configure destination(SaveDestination value) {
    Configure configure;
    configure.save_destination = value;
    return configure;
}

TEST(BrainConfiguring, IsAnsweredWhenAllIsInForce) {
    ReadyStage stage;
    Configure configure = destination(SaveDestination::both);
    configure.file_type = FileType::both;
    const RequestId request = stage.ask(configure);
    stage.hear("CONNECTED|MODEL-A");  // another session than the one that was asked
    stage.after(milliseconds(1));
    const auto state = stage.answer_to<SessionState>(request);
    EXPECT_EQ(state.save_destination.in_force, SaveDestination::both);
    EXPECT_EQ(state.file_type.in_force, FileType::both);
    EXPECT_EQ(stage.states(), (States{State::settling, State::ready}));
    EXPECT_EQ(stage.said(), (Lines{"SET_SAVE_DEST|both", "PRIME", "SET_SAVE_DEST|both", "PRIME",
                                   "SET_FILE_TYPE|both", "PRIME"}));
}

TEST(BrainConfiguring, WhileASessionSettlesItIsSettledAnew) {
    Stage stage(wishes(SaveDestination::disk, FileType::raw));
    stage.takes_type = false;
    stage.ask(Connect{});
    stage.after(milliseconds(100));
    ASSERT_EQ(stage.state().state, State::settling);
    const RequestId request = stage.ask(destination(SaveDestination::both));
    stage.after(seconds(3));
    EXPECT_EQ(stage.answer_to<SessionState>(request).save_destination.in_force,
              SaveDestination::both);
}

TEST(BrainConfiguring, IsAnsweredWhenAProblemSaysWhatIsNot) {
    Stage stage;
    stage.takes_type = false;
    stage.get_ready();
    const RequestId request = stage.ask(type(FileType::raw));
    stage.after(seconds(2));
    const auto state = stage.answer_to<SessionState>(request);
    EXPECT_EQ(state.file_type, (Setting<FileType>{FileType::raw, FileType::jpeg}));
    EXPECT_EQ(state.problems.at(0).code, Code::file_type_not_taken);
    stage.takes_type = true;
    const RequestId again = stage.ask(type(FileType::raw));
    stage.after(seconds(2));
    EXPECT_TRUE(stage.answer_to<SessionState>(again).problems.empty());
}

TEST(BrainConfiguring, DuringAShotItWaitsForItsTurn) {
    ReadyStage stage;
    const RequestId first = stage.shoot();
    stage.ask(Capture{});
    const RequestId configure = stage.ask(type(FileType::raw));
    const RequestId third = stage.ask(Capture{});
    stage.after(seconds(1));
    EXPECT_FALSE(stage.said("SET_FILE_TYPE|raw"));
    stage.file("DSC00001.JPG");
    EXPECT_TRUE(stage.is_answered(first));
    stage.after(milliseconds(800));
    stage.file("DSC00002.JPG");
    stage.after(milliseconds(800));
    EXPECT_TRUE(stage.is_answered(configure));
    stage.file("DSC00003.ARW");
    EXPECT_EQ(stage.answer_to<Shot>(third).status, ShotStatus::complete);
    EXPECT_EQ(stage.said(), (Lines{"CAPTURE", "PRIME", "CAPTURE", "PRIME", "SET_SAVE_DEST|disk",
                                   "PRIME", "SET_FILE_TYPE|raw", "PRIME", "CAPTURE", "PRIME"}));
}

TEST(BrainConfiguring, ChangesAreMadeInTheirOrderAlsoBehindADisconnect) {
    ReadyStage stage;
    stage.shoot();
    const RequestId first = stage.ask(type(FileType::raw));
    const RequestId second = stage.ask(type(FileType::both));
    stage.ask(Disconnect{});
    stage.file("DSC00001.JPG");
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<SessionState>(first).file_type.asked, FileType::raw);
    EXPECT_EQ(stage.answer_to<SessionState>(second).file_type.asked, FileType::both);
    EXPECT_EQ(stage.state().file_type.asked, FileType::both) << "what was asked last";
}

TEST(BrainConfiguring, WithoutASessionItIsKeptForTheNext) {
    Stage stage;
    stage.get_idle();
    stage.hear("LOG|[SONY] could not ask for both halves of a RAW pair (0x00008402)");
    EXPECT_TRUE(stage.state().problems.empty());
    const RequestId request = stage.ask(type(FileType::raw));
    EXPECT_EQ(stage.answer_to<SessionState>(request).file_type,
              (Setting<FileType>{FileType::raw, {}}));
    EXPECT_EQ(stage.states(), States{State::idle}) << "all are told";
    stage.forget();
    stage.ask(destination(SaveDestination::both));
    EXPECT_EQ(stage.states(), States{State::idle});
    stage.get_ready();
    EXPECT_EQ(stage.state().file_type.in_force, FileType::raw);
}

TEST(BrainConfiguring, WhileTheSessionIsAwayTheProblemThatHindersItIsTheAnswer) {
    Stage stage;
    stage.camera_there = false;
    stage.ask(Connect{});
    stage.after(seconds(3));
    const RequestId request = stage.ask(type(FileType::raw));
    stage.after(seconds(10));
    EXPECT_EQ(stage.answer_to<SessionState>(request).problems.at(0).code, Code::camera_not_found);
}

TEST(BrainConfiguring, ANameIsForTheFilesThatFollow) {
    ReadyStage stage;
    Configure configure;
    configure.name = "{date}-{n}";
    stage.answer_to<SessionState>(stage.ask(configure));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.asked_of_disk<Place>().at(0).name, "{date}-{n}");
    EXPECT_EQ(stage.states(), States{}) << "nothing is asked of the camera";
}

TEST(BrainConfiguring, AnotherFolderIsOpenedAndTheWorkerMovedBehindTheFence) {
    ReadyStage stage;
    const RequestId request = stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/new");
    EXPECT_EQ(stage.said(), (Lines{"PRIME", "SET_DOWNLOAD_DIR|/new/.incoming/run-2", "PRIME"}));
    EXPECT_EQ(stage.states(), States{State::ready}) << "all are told";
    EXPECT_EQ(stage.asked_of_disk<OpenRun>().at(0).moved_from, "run-1");
    EXPECT_GT(stage.asked_of_disk<OpenRun>()[0].ticket,
              stage.asked_of_disk<OpenFolder>().at(0).ticket);
    EXPECT_TRUE(stage.workers().empty()) << "it is the same worker";
    EXPECT_TRUE(stage.asked_of_disk<CloseFolder>().empty()) << "it may still bring files there";
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.asked_of_disk<Examine>().at(0).run, "run-2");
}

TEST(BrainConfiguring, NoFolderIsOpenedBeforeTheWorkerIsDoneWithTheOneBefore) {
    {
        ReadyStage stage;
        stage.worker_answers = false;
        stage.ask(folder("/new"));
        stage.tell(WorkerEnded{"run-1", WorkerEnd::gone, 1});
        stage.after(milliseconds(1));
        stage.hear("DOWNLOAD_DIR|/shots/.incoming/run-2");
        stage.hear("PRIME_DONE|OK");
        stage.hear("PRIME_DONE|OK");  // that behind CONNECT
        EXPECT_TRUE(stage.asked_of_disk<OpenFolder>().empty()) << "nor the one in its place";
        stage.hear("PRIME_DONE|OK");
        EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), 1U);
    }
    {
        Stage stage;
        stage.disk_answers = false;
        stage.ask(Start{});
        const RequestId request = stage.ask(folder("/new"));
        EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), 1U) << "while another is being opened";
        stage.disk_answers = true;
        stage.after(Time{});
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/new");
    }
}

TEST(BrainConfiguring, WithoutAWorkerTheFolderOfBeforeIsClosedAtOnceAndNoneIsStarted) {
    Stage stage;
    stage.ask(folder("/first"));
    EXPECT_TRUE(stage.asked_of_disk<CloseFolder>().empty()) << "none was open";
    stage.ask(folder("/second"));
    ASSERT_EQ(stage.asked_of_disk<CloseFolder>().size(), 1U);
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>()[0].folder, "/first");
    EXPECT_EQ(stage.states(), States{State::down});
    EXPECT_TRUE(stage.asked_of_disk<OpenRun>().empty());
}

TEST(BrainConfiguring, TheFolderOfBeforeIsSweptAndClosedWhenTheWorkerHasEnded) {
    ReadyStage stage;
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.forget();
    stage.tell(WorkerEnded{"run-1", WorkerEnd::gone, 9 + 128});
    const auto sweeps = stage.asked_of_disk<SweepRun>();
    ASSERT_EQ(sweeps.size(), 2U);
    EXPECT_EQ(sweeps[0].run, "run-2");
    EXPECT_EQ(sweeps[1].run, "run-1");
    EXPECT_TRUE(sweeps[1].over);
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/shots");
    EXPECT_EQ(stage.asked_of_disk<OpenRun>().at(0).folder, "/new");
}

TEST(BrainConfiguring, AWorkerThatWasMovedIsKnownByTheRunThatItWasStartedFor) {
    ReadyStage stage;
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.worker_ends = false;
    stage.tell(WorkerFlooded{"run-1", "much"});
    EXPECT_EQ(stage.ladders().at(0).run, "run-1");
    stage.tell(WorkerEnded{"run-1", WorkerEnd::sigterm, 143});
    stage.after(seconds(2));
    EXPECT_EQ(stage.workers().size(), 1U);
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainConfiguring, AFileMeantForTheFolderOfBeforeIsLookedForThere) {
    ReadyStage stage;
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.report("DSC00001.JPG");
    const auto sweeps = stage.asked_of_disk<SweepRun>();
    ASSERT_EQ(sweeps.size(), 1U);
    EXPECT_EQ(sweeps[0].run, "run-1");
    EXPECT_FALSE(sweeps[0].over);
}

TEST(BrainConfiguring, WhyAFolderWasNotChangedIsStillThereWhenTheOldOneWasOpenedMeanwhile) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    stage.refuse_folder(Code::folder_in_use, "/shots is in use");
    stage.forget();
    const RequestId configure = stage.ask(folder("/new"));
    stage.ask(Connect{});
    stage.refuse_folder(Code::folder_in_use, "/new is in use");
    stage.disk_answers = true;
    stage.after(seconds(3));
    const auto state = stage.answer_to<SessionState>(configure);
    EXPECT_EQ(state.folder, "/shots");
    EXPECT_EQ(state.problems.at(0).text, "/new is in use");
    EXPECT_TRUE(stage.state().problems.empty()) << "the old one is no longer";
}

TEST(BrainConfiguring, AFolderThatTheSdkDidNotTakeIsGivenToItAgainOnDemand) {
    ReadyStage stage;
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    EXPECT_EQ(
        stage.standing(Code::folder_not_taken),
        (Problem{Code::folder_not_taken, "The camera SDK does not take the folder.", 0x8000, {}}));
    const RequestId request = stage.ask(folder("/shots"));
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.said("SET_DOWNLOAD_DIR|/shots/.incoming/run-2"));
    EXPECT_TRUE(stage.answer_to<SessionState>(request).problems.empty());
}

TEST(BrainConfiguring, AFolderThatTheSdkRefusesLeavesTheOldOneInForce) {
    ReadyStage stage;
    stage.worker_answers = false;
    const RequestId request = stage.ask(folder("/new"));
    stage.hear("PRIME_DONE|OK");
    stage.hear("DOWNLOAD_DIR|/new/.incoming/run-2");
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    stage.forget();
    stage.hear("PRIME_DONE|OK");
    const auto state = stage.answer_to<SessionState>(request);
    EXPECT_EQ(state.folder, "/shots");
    EXPECT_EQ(
        state.problems.at(0),
        (Problem{Code::folder_not_taken, "The camera SDK does not take the folder.", 0x8000, {}}));
    EXPECT_EQ(stage.said(), (Lines{"SET_DOWNLOAD_DIR|/shots/.incoming/run-1"}));
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().at(0).run, "run-2");
    EXPECT_TRUE(stage.asked_of_disk<SweepRun>().at(0).over);
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/new");
}

TEST(BrainConfiguring, AWorkerThatDoesNotSayThatItTakesTheFolderDoesNotTakeIt) {
    ReadyStage stage;
    stage.worker_answers = false;
    const RequestId request = stage.ask(folder("/new"));
    stage.hear("PRIME_DONE|OK");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.answer_to<SessionState>(request).problems.at(0).text,
              "The worker does not take the folder.");
}

TEST(BrainConfiguring, AFolderOfBeforeThatIsRefusedInItsTurnStandsBehindTheAnswer) {
    ReadyStage stage;
    stage.worker_answers = false;
    Configure configure = type(FileType::raw);
    configure.folder = "/new";
    const RequestId request = stage.ask(configure);
    stage.hear("PRIME_DONE|OK");
    stage.hear("PRIME_DONE|OK");  // the worker does not take it, and gets the one of before again
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    stage.worker_answers = true;
    stage.hear("SAVE_DEST|disk");
    stage.hear("PRIME_DONE|OK");
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<SessionState>(request).problems.at(0).sdk, 0x8000U);
    EXPECT_EQ(stage.standing(Code::folder_not_taken).sdk, 0x8000U);
}

TEST(BrainConfiguring, SettingsAreTakenAlsoWhenTheFolderIsNot) {
    ReadyStage stage;
    Configure configure = type(FileType::raw);
    configure.folder = "/" + std::string(2000, '|');
    const RequestId request = stage.ask(configure);
    stage.after(milliseconds(1));
    const auto state = stage.answer_to<SessionState>(request);
    EXPECT_EQ(state.file_type.in_force, FileType::raw);
    EXPECT_EQ(state.problems.at(0).code, Code::folder_not_taken);
}

TEST(BrainConfiguring, AnotherFolderIsTriedAtOnceWhereTheOneBeforeIsInUse) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Connect{});
    stage.refuse_folder(Code::folder_in_use, "in use");
    ASSERT_EQ(stage.state().state, State::down);
    stage.disk_answers = true;
    stage.ask(folder("/new"));
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.state().folder, "/new");
}

TEST(BrainConfiguring, APathThatDoesNotFitInALineIsNotTaken) {
    ReadyStage stage;
    const RequestId request = stage.ask(folder("/" + std::string(2000, '|')));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<SessionState>(request).problems.at(0),
              (Problem{Code::folder_not_taken, "The folder's path is too long.", {}, {}}));
    EXPECT_EQ(stage.said(), (Lines{"PRIME"}));
    EXPECT_TRUE(stage.asked_of_disk<OpenRun>().empty());
    for (const std::size_t length : {3966U, 3967U}) {
        stage.ask(folder("/" + std::string(length - 1, 'a')));
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.state().folder.size(), 3966U);
    }
}

TEST(BrainConfiguring, NorIsItWithoutAWorkerOrAtTheStart) {
    Stage stage;
    const RequestId request = stage.ask(folder("/" + std::string(2000, '|')));
    EXPECT_EQ(stage.answer_to<SessionState>(request).problems.at(0).code, Code::folder_not_taken);
    stage.get_ready();
    EXPECT_EQ(stage.state().folder, "/shots");

    Wishes wishes;
    wishes.folder = "/" + std::string(2000, '|');
    Stage other(wishes);
    const RequestId start = other.ask(Start{});
    EXPECT_EQ(other.answer_to<Problem>(start).code, Code::folder_not_taken);
    EXPECT_EQ(other.asked_of_disk<CloseFolder>().size(), 1U);
    other.after(seconds(59));
    EXPECT_EQ(other.asked_of_disk<OpenFolder>().size(), 1U) << "tried once a minute";
}

TEST(BrainConfiguring, TheSameFolderIsNotOpenedAgain) {
    ReadyStage stage;
    stage.answer_to<SessionState>(stage.ask(folder("/shots")));
    EXPECT_TRUE(stage.asked_of_disk<OpenFolder>().empty());
}

TEST(BrainConfiguring, AFolderThatIsGoneIsOpenedAgainOnDemand) {
    ReadyStage stage;
    stage.folder_there = false;
    stage.ask(Capture{});
    stage.ask(folder("/shots"));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), 1U);
    EXPECT_TRUE(stage.said("SET_DOWNLOAD_DIR|/shots/.incoming/run-2"));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
}

TEST(BrainConfiguring, AWorkerThatDiesInEachStepOfAMoveIsReplacedAndTheRequestAnswered) {
    for (int step = 0; step < 4; ++step) {
        ReadyStage stage;
        stage.worker_answers = false;
        stage.disk_answers = false;
        const RequestId request = stage.ask(folder("/new"));
        if (step >= 1) {
            stage.hear("PRIME_DONE|OK");  // the folder is being opened
        }
        stage.disk_answers = step >= 3;
        if (step == 2) {
            stage.answer(stage.opened("/new"));  // the run is being made
        }
        if (step == 3) {
            stage.after(milliseconds(1));  // the worker is being moved
            EXPECT_TRUE(stage.said("SET_DOWNLOAD_DIR|/new/.incoming/run-2"));
        }
        stage.worker_answers = true;
        stage.tell(WorkerEnded{"run-1", WorkerEnd::gone, 139});
        stage.disk_answers = true;
        stage.after(seconds(5));
        const auto state = stage.answer_to<SessionState>(request);
        EXPECT_EQ(state.folder, "/new") << step;
        EXPECT_EQ(state.problems, std::vector<Problem>{}) << step;
        EXPECT_EQ(stage.state().state, State::ready) << step;
        EXPECT_EQ(stage.state().folder, "/new") << step;
        Lines swept;
        for (const SweepRun& sweep : stage.asked_of_disk<SweepRun>()) {
            swept.push_back(sweep.run + (sweep.over ? " is over" : ""));
        }
        EXPECT_EQ(swept, (step < 2   ? Lines{"run-1 is over"}
                          : step < 3 ? Lines{"run-1 is over", "run-2 is over"}
                                     : Lines{"run-2 is over", "run-1 is over"}))
            << step;
    }
}

TEST(BrainConfiguring, AWorkerThatIsLostWhileTheDiskOpensTheFolderIsReplacedInIt) {
    for (const bool floods : {true, false}) {
        ReadyStage stage;
        stage.disk_answers = false;
        const RequestId request = stage.ask(folder("/new"));
        stage.after(milliseconds(1));
        if (floods) {
            stage.tell(WorkerFlooded{"run-1", "much"});
        } else {
            stage.tell(WorkerEnded{"run-1", WorkerEnd::gone, 1});
        }
        stage.after(milliseconds(30'100));
        EXPECT_EQ(stage.state().state, State::starting) << floods;
        stage.disk_answers = true;
        stage.after(Time{});
        EXPECT_EQ(stage.workers().size(), 1U) << "at once";
        stage.after(seconds(2));
        EXPECT_EQ(stage.state().state, State::ready) << floods;
        EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/new") << floods;
        EXPECT_EQ(stage.workers().at(0).staging.substr(0, 5), "/new/") << floods;
    }
}

TEST(BrainConfiguring, AWorkerThatIsOnTheLadderWhenTheFolderIsOpenIsReplacedInIt) {
    ReadyStage stage;
    stage.disk_answers = false;
    stage.worker_ends = false;
    const RequestId request = stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.tell(WorkerFlooded{"run-1", "much"});
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    stage.tell(WorkerEnded{"run-1", WorkerEnd::sigterm, 143});
    stage.after(seconds(2));
    EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/new");
}

TEST(BrainConfiguring, AFolderOfBeforeThatIsOpenedAgainIsNotClosedByTheEndOfItsWorker) {
    for (const bool open : {false, true}) {
        ReadyStage stage;
        stage.ask(folder("/new"));
        stage.after(milliseconds(1));
        stage.disk_answers = false;
        stage.worker_ends = false;
        const RequestId request = stage.ask(folder("/shots"));
        stage.after(milliseconds(1));
        stage.tell(WorkerFlooded{"run-1", "much"});
        if (open) {
            stage.answer(stage.opened("/shots"));
        }
        stage.tell(WorkerEnded{"run-1", WorkerEnd::sigterm, 143});
        EXPECT_TRUE(stage.asked_of_disk<CloseFolder>().empty()) << open;
        stage.disk_answers = true;
        stage.after(seconds(2));
        EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/shots") << open;
        EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/new") << open;
    }
}

TEST(BrainConfiguring, AFolderThatIsOpenedTooLateIsClosedUnlessItIsWantedAgain) {
    for (const bool again : {false, true}) {
        ReadyStage stage;
        stage.disk_answers = false;
        stage.ask(folder("/new"));
        stage.after(seconds(60));
        if (again) {
            stage.ask(folder("/new"));
            stage.after(milliseconds(1));
        }
        stage.disk_answers = true;
        stage.after(seconds(1));
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.asked_of_disk<CloseFolder>().size(), again ? 0U : 1U);
        EXPECT_EQ(stage.state().folder, again ? "/new" : "/shots");
    }
}

TEST(BrainConfiguring, IsAnsweredAfter60SecondsAtTheLatest) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId request = stage.ask(folder("/new"));
    stage.after(seconds(59));
    EXPECT_FALSE(stage.is_answered(request));
    stage.after(seconds(1));
    EXPECT_EQ(
        stage.answer_to<Problem>(request),
        (Problem{Code::folder_not_taken, "The folder could not be changed in time.", {}, {}}));
    EXPECT_EQ(stage.state().folder, "/shots");
    EXPECT_FALSE(stage.stands(Code::folder_not_taken)) << "it is of a folder not in force";
}

TEST(BrainConfiguring, ATypeThatCannotBeAskedInTimeSaysNothingOfAFolder) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    const RequestId request = stage.ask(type(FileType::raw));
    stage.after(seconds(60));
    EXPECT_EQ(stage.answer_to<Problem>(request).text,
              "The disk of the folder has not answered yet.");
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainConfiguring, NoMoreThan8FoldersOfBeforeAreKeptOpenForOneWorker) {
    ReadyStage stage;
    for (int count = 1; count <= 10; ++count) {
        EXPECT_EQ(stage.asked_of_disk<CloseFolder>().size(), count < 10 ? 0U : 1U) << count;
        stage.ask(folder("/" + std::to_string(count)));
        stage.after(milliseconds(1));
    }
    const auto closed = stage.asked_of_disk<CloseFolder>();
    const auto swept = stage.asked_of_disk<SweepRun>();
    ASSERT_EQ(closed.size(), 2U);
    EXPECT_EQ(closed[0].folder, "/shots");
    EXPECT_EQ(closed[1].folder, "/1");
    ASSERT_EQ(swept.size(), 2U);
    EXPECT_EQ(swept[0].run, "run-1");
    EXPECT_EQ(swept[1].run, "run-2");
}

TEST(BrainConfiguring, WhyAFolderWasNotTakenIsAnsweredAndDoesNotStandAgainstTheOneInForce) {
    for (const Code code : {Code::folder_in_use, Code::folder_not_permitted, Code::folder_gone,
                            Code::folder_not_taken}) {
        ReadyStage stage;
        stage.disk_answers = false;
        const RequestId request = stage.ask(folder("/new"));
        stage.after(milliseconds(1));
        stage.refuse_folder(code, "/new");
        const auto state = stage.answer_to<SessionState>(request);
        EXPECT_EQ(state.folder, "/shots") << word(code);
        EXPECT_EQ(state.problems.at(0).code, code);
        EXPECT_EQ(state.problems.at(0).text, "/new");
        EXPECT_EQ(stage.said(), (Lines{"PRIME"})) << word(code);
        EXPECT_TRUE(stage.asked_of_disk<SweepRun>().empty());
        EXPECT_TRUE(stage.told(code));
        EXPECT_TRUE(stage.state().problems.empty()) << word(code);
    }
}

TEST(BrainConfiguring, WhatStoodAgainstTheFolderInForceStandsBehindTheAnswerToo) {
    ReadyStage stage;
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    const Problem before = stage.standing(Code::folder_not_taken);
    const RequestId request = stage.ask(folder("/" + std::string(2000, '|')));
    stage.after(milliseconds(1));
    EXPECT_NE(stage.answer_to<SessionState>(request).problems.at(0), before);
    EXPECT_EQ(stage.standing(Code::folder_not_taken), before);
}

}  // namespace
}  // namespace host::brain
