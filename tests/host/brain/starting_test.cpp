// A worker from nothing to its first session, and what keeps it from that.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

TEST(BrainStarting, TheFolderIsOpenedAndTheWorkerStartedInARunOfItsOwn) {
    Stage stage;
    const RequestId start = stage.ask(Start{});
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.asked_of_disk<OpenFolder>().at(0).folder, "shots");
    EXPECT_EQ(stage.asked_of_disk<OpenRun>().at(0).folder, "/shots");
    EXPECT_EQ(stage.workers().at(0).staging, "/shots/.incoming/run-1");
    EXPECT_EQ(stage.asked_of_disk<RunBegun>().at(0).process, 4711);
    EXPECT_EQ(stage.said(),
              (Lines{"SET_DOWNLOAD_DIR|/shots/.incoming/run-1", "SET_SAVE_DEST|disk", "PRIME"}));
    EXPECT_EQ(stage.states(), (States{State::starting, State::idle}));
    EXPECT_EQ(stage.answer_to<SessionState>(start).folder, "/shots");
    EXPECT_EQ(stage.brain.banner(), "START sony-1.0");
}

TEST(BrainStarting, ConnectGoesFromDownToReadyInTheOrderOfTheContract) {
    Stage stage;
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(2));
    EXPECT_EQ(stage.states(), (States{State::starting, State::idle, State::opening, State::settling,
                                      State::ready}));
    const auto state = stage.answer_to<SessionState>(connect);
    EXPECT_EQ(state.camera, "MODEL-A");
    EXPECT_EQ(state.save_destination.in_force, SaveDestination::disk);
    EXPECT_EQ(state.file_type.in_force, FileType::jpeg);
    EXPECT_TRUE(state.problems.empty());
}

TEST(BrainStarting, WhatWasLeftByARunOfThePastIsToldAndTheDiskKnowsThatItWas) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    Picture left;
    left.id = "left";
    left.recovered = true;
    FolderOpened opened = stage.opened("/shots");
    opened.pictures = {left};
    opened.problems = {{Code::picture_not_placed, "x stays where it is", {}, {}}};
    stage.answer(opened);
    EXPECT_EQ(stage.pictures().at(0).id, "left");
    EXPECT_TRUE(stage.told(Code::picture_not_placed));
}

TEST(BrainStarting, ShotsAreNumberedOnFromTheLedger) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Connect{});
    FolderOpened opened = stage.opened("/shots");
    opened.last_shot = 41;
    stage.answer(opened);
    stage.answer(RunOpened{stage.asked_of_disk<OpenRun>().at(0).ticket, "run-1", "/s", 7});
    stage.after(seconds(1));
    ASSERT_EQ(stage.state().state, State::ready);
    stage.ask(Capture{});
    stage.after(seconds(6));
    EXPECT_EQ(stage.shots().at(0).number, 42U);
}

TEST(BrainStarting, AWorkerThatIsMissingIsAProblemAndTriedAgainAfterAMinute) {
    Stage stage;
    stage.worker_starts = false;
    const RequestId start = stage.ask(Start{});
    stage.after(seconds(1));
    EXPECT_EQ(stage.answer_to<Problem>(start).code, Code::worker_missing);
    EXPECT_EQ(stage.state().state, State::down);
    EXPECT_TRUE(stage.stands(Code::worker_missing));
    stage.worker_starts = true;
    stage.after(seconds(58));
    EXPECT_EQ(stage.state().state, State::down);
    stage.after(seconds(2));
    EXPECT_EQ(stage.state().state, State::idle);
    EXPECT_FALSE(stage.stands(Code::worker_missing));
}

TEST(BrainStarting, ConnectTriesAtOnceWhenDown) {
    Stage stage;
    stage.worker_starts = false;
    stage.ask(Start{});
    stage.after(seconds(1));
    stage.worker_starts = true;
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(1));
    EXPECT_EQ(stage.answer_to<SessionState>(connect).state, State::ready);
}

TEST(BrainStarting, AFolderInUseIsAnErrorOfStartAndTriedAgain) {
    Stage stage;
    stage.disk_answers = false;
    const RequestId start = stage.ask(Start{});
    stage.refuse_folder(Code::folder_in_use, "in use");
    EXPECT_EQ(stage.answer_to<Problem>(start).code, Code::folder_in_use);
    EXPECT_EQ(stage.state().state, State::down);
    stage.forget();
    stage.after(minutes(1));
    EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), 1U);
    stage.answer(stage.opened("/shots"));
    EXPECT_FALSE(stage.stands(Code::folder_in_use));
}

TEST(BrainStarting, AFolderThatTakesNoRunIsTriedAgainAfterAMinute) {
    Stage stage;
    stage.disk_answers = false;
    const RequestId start = stage.ask(Start{});
    stage.answer(stage.opened("/shots"));
    stage.answer(RunNotOpened{stage.asked_of_disk<OpenRun>().at(0).ticket,
                              {Code::folder_not_permitted, "/shots", {}, {}}});
    EXPECT_EQ(stage.answer_to<Problem>(start).code, Code::folder_not_permitted);
    stage.after(seconds(59));
    EXPECT_EQ(stage.asked_of_disk<OpenRun>().size(), 1U);
    stage.after(seconds(1));
    EXPECT_EQ(stage.asked_of_disk<OpenRun>().size(), 2U);
}

TEST(BrainStarting, AFolderThatTakesNoRunIsNotTakenForTheOneInForce) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId request = stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.answer(stage.opened("/new"));
    const Problem refused{Code::folder_not_permitted, "/new", {}, {}};
    stage.answer(RunNotOpened{stage.asked_of_disk<OpenRun>().at(0).ticket, refused});
    EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/shots");
    EXPECT_EQ(stage.problems(), std::vector<Problem>{refused});
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/new");
    EXPECT_EQ(stage.said(), Lines{"PRIME"});
}

TEST(BrainStarting, ARunThatIsNotMadeIsNoMatterToAChangeThatWaitsNorBehindTheEnd) {
    for (const bool ends : {false, true}) {
        Stage stage;
        stage.disk_answers = false;
        const RequestId start = stage.ask(Start{});
        stage.answer(stage.opened("/shots"));
        stage.forget();
        const RequestId other = stage.ask(ends ? Request(Shutdown{}) : Request(folder("/new")));
        stage.answer(RunNotOpened{2, {Code::folder_not_permitted, "/shots", {}, {}}});
        EXPECT_EQ(stage.answer_to<Problem>(start).code,
                  ends ? Code::cancelled : Code::folder_not_permitted);
        EXPECT_EQ(stage.told(Code::folder_not_permitted), !ends);
        EXPECT_EQ(stage.is_answered(other), ends);
        EXPECT_EQ(stage.asked_of_disk<OpenFolder>().size(), ends ? 0U : 1U) << "the new one";
    }
}

// What was to be started was given to the system, which has not answered yet.
class LaunchingStage : public Stage {
  public:
    LaunchingStage() {
        disk_answers = false;
        worker_ends = false;
        ask(Start{});
        const FolderOpened folder = opened("/shots");
        brain.tell(folder, now);
        brain.tell(RunOpened{2, "r", "/shots/.incoming/r", 7}, now);
        brain.take();
    }
};

TEST(BrainStarting, TheTimeToGetReadyBeginsWithTheProcess) {
    LaunchingStage stage;
    stage.after(seconds(5));
    stage.tell(WorkerStarted{"r", 12});
    stage.after(milliseconds(9'999));
    EXPECT_TRUE(stage.problems().empty());
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.told(Code::worker_not_starting));
}

TEST(BrainStarting, AWorkerThatTheEndFindsBeingStartedIsNotBegunWith) {
    LaunchingStage stage;
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.tell(WorkerStarted{"r", 12});
    EXPECT_EQ(stage.asked_of_disk<RunBegun>().at(0).process, 12) << "the next start may find it";
    stage.tell(WorkerEnded{"r", WorkerEnd::quit, 0});
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::quit, 0}));
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainStarting, AFolderThatIsWaitedForIsShownAndIsNoProblemYet) {
    Stage stage;
    stage.disk_answers = false;
    const RequestId connect = stage.ask(Connect{});
    const Ticket ticket = stage.asked_of_disk<OpenFolder>().at(0).ticket;
    stage.tell(FolderWaitedFor{ticket + 1, {Code::folder_in_use, "another folder", {}, {}}});
    stage.answer(FolderNotOpened{ticket + 1, {Code::folder_in_use, "another folder", {}, {}}});
    EXPECT_EQ(stage.state().state, State::starting);
    EXPECT_FALSE(stage.state().waited_for);
    stage.tell(FolderWaitedFor{ticket, {Code::folder_in_use, "in use", {}, {}}});
    EXPECT_EQ(stage.state().waited_for.value().code, Code::folder_in_use);
    EXPECT_TRUE(stage.state().problems.empty());
    stage.after(milliseconds(59'999));
    EXPECT_FALSE(stage.is_answered(connect));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Problem>(connect).text, "in use");
    stage.answer(FolderOpened{ticket, "/shots", {}, {}, 0, {}});
    EXPECT_FALSE(stage.state().waited_for);
}

TEST(BrainStarting, ASettingThatIsAskedWhileTheFolderIsOpenedWaitsForTheWorker) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    const RequestId request = stage.ask(type(FileType::raw));
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.states(), (States{State::starting, State::idle}));
    EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/shots");
}

TEST(BrainStarting, DisconnectDoesNotKeepAWorkerFromBeingTriedAgain) {
    Stage stage;
    stage.worker_starts = false;
    stage.ask(Start{});
    stage.after(seconds(1));
    EXPECT_EQ(stage.answer_to<SessionState>(stage.ask(Disconnect{})).state, State::down);
    stage.worker_starts = true;
    stage.after(minutes(1));
    EXPECT_EQ(stage.state().state, State::idle);
}

TEST(BrainStarting, AStateIsToldBeforeWhatIsDoneInIt) {
    Stage stage;
    stage.get_idle();
    stage.brain.ask(100, type(FileType::raw), stage.now);
    std::vector<Effect> effects = stage.brain.take();
    ASSERT_EQ(effects.size(), 2U);
    EXPECT_EQ(std::get<StateChanged>(effects[0]).state.file_type.asked, FileType::raw);
    EXPECT_EQ(std::get<Reply>(effects[1]).request, 100U);
    stage.brain.ask(101, Connect{}, stage.now);
    effects = stage.brain.take();
    ASSERT_EQ(effects.size(), 3U);
    EXPECT_EQ(std::get<StateChanged>(effects[0]).state.state, State::opening);
    EXPECT_EQ(std::get<Say>(effects[1]).line, "CONNECT");
}

TEST(BrainStarting, WhatIsHeardWithoutAWorkerCountsForNothing) {
    Stage stage;
    stage.hear("ERROR|Could not set the download folder (0x00008000)");
    stage.hear("ERROR|Camera reported 0x000000FF");
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainStarting, AWorkerThatDoesNotGetReadyIsEndedQuicklyAndReplaced) {
    Stage stage;
    stage.worker_gets_ready = false;
    stage.ask(Start{});
    stage.hear("ERROR|Unknown command");
    stage.after(seconds(9));
    EXPECT_TRUE(stage.ladders().empty());
    stage.worker_gets_ready = true;
    stage.after(seconds(2));
    ASSERT_EQ(stage.ladders().size(), 1U);
    EXPECT_EQ(stage.ladders()[0].rung, seconds(1));
    EXPECT_EQ(stage.problems(),
              (std::vector<Problem>{{Code::worker_not_starting,
                                     "The worker was started and did not get ready in time.",
                                     {},
                                     {}}}));
    EXPECT_EQ(stage.state().state, State::idle);
    EXPECT_EQ(stage.state().restarts, 1U);
}

TEST(BrainStarting, AnSdkThatDoesNotStartIsSaidSo) {
    Stage stage;
    stage.worker_gets_ready = false;
    stage.ask(Start{});
    stage.hear("ERROR|Sony Camera Remote SDK failed to initialise");
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    EXPECT_EQ(stage.problems().at(0).text, "The camera SDK could not be started.");
    EXPECT_FALSE(stage.told(Code::worker_not_starting));
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    EXPECT_TRUE(stage.told(Code::worker_not_starting)) << "the next one gave no reason";
}

TEST(BrainStarting, WhatSaysReadyWithoutSayingWhoItIsIsNoWorker) {
    Stage stage;
    stage.worker_gets_ready = false;
    stage.disk_answers = false;
    stage.ask(Start{});
    FolderOpened opened = stage.opened("/shots");
    stage.brain.tell(opened, stage.now);
    stage.brain.tell(RunOpened{2, "r", "/s", 7}, stage.now);
    stage.brain.tell(WorkerStarted{"r", 1}, stage.now);
    stage.brain.hear("READY|OK", stage.now);
    EXPECT_EQ(stage.state().state, State::starting);
    stage.brain.hear("CPP_WORKER|START sony-1.0", stage.now);
    stage.brain.hear("CPP_WORKER|AGAIN", stage.now);
    stage.brain.hear("READY|NO", stage.now);
    EXPECT_EQ(stage.state().state, State::starting);
    stage.brain.hear("READY|OK", stage.now);
    stage.brain.hear("CPP_WORKER|AGAIN", stage.now);
    EXPECT_EQ(stage.state().state, State::idle);
    EXPECT_EQ(stage.brain.banner(), "START sony-1.0");
    stage.brain.take();
    stage.hear("READY|OK");
    EXPECT_TRUE(stage.said().empty()) << "it is ready already";
    stage.tell(WorkerEnded{"r", WorkerEnd::gone, 1});
    stage.brain.tell(RunOpened{stage.asked_of_disk<OpenRun>().at(0).ticket, "s", "/s", 7},
                     stage.now);
    stage.brain.tell(WorkerStarted{"s", 2}, stage.now);
    stage.brain.hear("READY|OK", stage.now);
    EXPECT_EQ(stage.state().state, State::starting) << "who it is said the one before";
}

TEST(BrainStarting, WhatDoesNotEchoItsFolderIsNoWorker) {
    Stage stage;
    for (const bool first : {true, false}) {
        stage.worker_answers = false;
        stage.forget();
        stage.ask(Start{});
        stage.after(milliseconds(1));
        stage.hear("DOWNLOAD_DIR|/somewhere/else");
        stage.hear("PRIME_DONE|OK");
        EXPECT_TRUE(stage.told(Code::worker_not_starting)) << first;
        EXPECT_EQ(stage.ladders().size(), 1U) << first;
        stage.worker_answers = true;
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.state().state, State::idle);
        stage.worker_answers = false;
        stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    }
}

TEST(BrainStarting, StartIsAnsweredAfter30SecondsAtTheLatest) {
    Stage stage;
    stage.disk_answers = false;
    const RequestId start = stage.ask(Start{});
    stage.after(milliseconds(29'999));
    EXPECT_FALSE(stage.is_answered(start));
    stage.after(milliseconds(1));
    stage.answer_to<Problem>(start);
    stage.after(milliseconds(54'999));
    EXPECT_FALSE(stage.stands(Code::folder_gone)) << "the lock of a folder may be waited for";
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.stands(Code::folder_gone));
}

TEST(BrainStarting, NewsOfAWorkerThatWasGivenUpCountForNothing) {
    ReadyStage stage;
    stage.tell(WorkerEnded{"another-run", WorkerEnd::gone, 1});
    stage.tell(WorkerFlooded{"another-run", "much"});
    stage.tell(WorkerInputFull{"another-run"});
    stage.tell(WorkerNotStarted{"another-run", "No such file."});
    stage.tell(WorkerStarted{stage.run, 12});
    EXPECT_TRUE(stage.asked_of_disk<RunBegun>().empty()) << "this one runs already";
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainStarting, TheVirtualCameraIsShownAsSuch) {
    Stage stage;
    stage.get_idle();
    stage.tell(CameraIsSimulated{});
    EXPECT_TRUE(stage.state().simulated);
    EXPECT_EQ(stage.states(), (States{State::idle}));
}

TEST(BrainStarting, AStartThatIsOutOfTimeIsAnsweredByWhatItWaitsFor) {
    {
        Stage stage;
        stage.disk_answers = false;
        const RequestId start = stage.ask(Start{});
        stage.after(seconds(31));
        EXPECT_EQ(stage.answer_to<Problem>(start).code, Code::folder_gone);
        const RequestId connect = stage.ask(Connect{});
        stage.after(seconds(61));
        EXPECT_EQ(stage.answer_to<Problem>(connect).code, Code::folder_gone);
    }
    {
        Stage stage;
        stage.disk_answers = false;
        stage.worker_gets_ready = false;
        const RequestId start = stage.ask(Start{});
        stage.after(seconds(25));
        stage.disk_answers = true;
        stage.after(milliseconds(1));
        stage.after(seconds(6));
        EXPECT_EQ(stage.answer_to<Problem>(start),
                  (Problem{Code::worker_not_starting, "The worker is not ready yet.", {}, {}}));
    }
}

}  // namespace
}  // namespace host::brain
