// The end: files on their way are waited for, then the ladder; how it ended is told.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using States = std::vector<State>;

TEST(BrainEnding, AnIdleSessionIsEndedWith5SecondsARungAndTellsHow) {
    ReadyStage stage;
    const RequestId configure = stage.ask(Configure{});
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answers(configure), 1U);
    EXPECT_EQ(stage.ladders().at(0).rung, seconds(5));
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::quit, 0}));
    EXPECT_EQ(stage.states(), (States{State::ending, State::down}));
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().at(0).run, "run-1");
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/shots");
    EXPECT_EQ(stage.state().camera, std::nullopt);
    EXPECT_EQ(stage.brain.wake_at(), never);
}

TEST(BrainEnding, FilesOnTheirWayAreWaitedFor) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.outcome(stage.ask(Capture{})),
              (Outcome{ShotStatus::refused, Code::not_connected}));
    stage.after(seconds(9));
    EXPECT_TRUE(stage.ladders().empty());
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
    EXPECT_EQ(stage.ladders().size(), 1U);
    EXPECT_EQ(stage.answers(shutdown), 1U);
}

TEST(BrainEnding, FilesOnTheirWayAreWaitedForNoLongerThan10Seconds) {
    ReadyStage stage;
    stage.worker_ends = false;
    const RequestId capture = stage.shoot();
    const RequestId queued = stage.ask(Capture{});
    stage.ask(Shutdown{});
    EXPECT_EQ(stage.outcome(queued), (Outcome{ShotStatus::refused, Code::cancelled}));
    stage.after(milliseconds(9'999));
    EXPECT_TRUE(stage.ladders().empty());
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.ladders().size(), 1U);
    EXPECT_EQ(stage.answer_to<Shot>(capture).problems.at(0),
              (Problem{Code::cancelled, "The session was ended.", {}, 1}));
}

TEST(BrainEnding, APatienceOfItsOwnCounts) {
    ReadyStage stage;
    stage.shoot();
    const RequestId request = stage.ask(Shutdown{Time{}});
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answers(request), 1U);
}

TEST(BrainEnding, ASecondShutdownSharesTheEndAndMayHastenIt) {
    ReadyStage stage;
    stage.shoot();
    const RequestId first = stage.ask(Shutdown{});
    const RequestId second = stage.ask(Shutdown{seconds(3)});
    stage.after(milliseconds(2'999));
    EXPECT_TRUE(stage.ladders().empty());
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Ended>(first), stage.answer_to<Ended>(second));
    EXPECT_EQ(stage.ladders().size(), 1U);
    const RequestId third = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answer_to<Ended>(third), (Ended{WorkerEnd::quit, 0}));
}

TEST(BrainEnding, DuringAnOpeningTheLadderBeginsAtOnce) {
    Stage stage;
    stage.camera_answers = false;
    stage.get_idle();
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(1));
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.ladders().size(), 1U);
    EXPECT_EQ(stage.answer_to<Problem>(connect).code, Code::cancelled);
    EXPECT_EQ(stage.answers(shutdown), 1U);
}

TEST(BrainEnding, WithoutAWorkerItIsOverAtOnce) {
    Stage stage;
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::gone, 0}));
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(Capture{})).text, "The session is being ended.");
}

TEST(BrainEnding, EverythingThatWaitsIsAnswered) {
    ReadyStage stage;
    stage.shoot();
    const RequestId capture = stage.ask(Capture{});
    const RequestId configure = stage.ask(type(FileType::raw));
    const RequestId disconnect = stage.ask(Disconnect{});
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::refused);
    EXPECT_EQ(stage.answer_to<Problem>(configure).code, Code::cancelled);
    EXPECT_EQ(stage.answers(disconnect), 1U);
    stage.after(seconds(11));
    EXPECT_EQ(stage.answers(shutdown), 1U);
    const Shot late = stage.answer_to<Shot>(stage.ask(Capture{}));
    EXPECT_EQ(late.status, ShotStatus::refused);
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(Connect{})),
              (Problem{Code::not_connected, "The session is being ended.", {}, {}}));
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(Start{})).code, Code::not_connected);
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(type(FileType::raw))).code, Code::not_connected);
    EXPECT_EQ(stage.answer_to<SessionState>(stage.ask(Disconnect{})).state, State::down);
}

TEST(BrainEnding, InTheMiddleOfAMoveBothFoldersAreSweptAndClosed) {
    ReadyStage stage;
    stage.worker_answers = false;
    const RequestId configure = stage.ask(folder("/new"));
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.said().back(), "PRIME") << "the worker is being moved";
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answer_to<Problem>(configure).text, "The session is being ended.");
    EXPECT_EQ(stage.answers(shutdown), 1U);
    const auto sweeps = stage.asked_of_disk<SweepRun>();
    ASSERT_EQ(sweeps.size(), 2U);
    EXPECT_EQ(sweeps[0].run + " " + sweeps[1].run, "run-1 run-2");
    const auto closed = stage.asked_of_disk<CloseFolder>();
    ASSERT_EQ(closed.size(), 2U);
    EXPECT_EQ(closed[0].folder + " " + closed[1].folder, "/new /shots");
}

TEST(BrainEnding, AFolderThatNoWorkerWasMovedToIsClosedAndItsRunTakenAway) {
    ReadyStage stage;
    stage.disk_answers = false;
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.answer(stage.opened("/new"));
    const Ticket ticket = stage.asked_of_disk<OpenRun>().at(0).ticket;
    stage.ask(Shutdown{});
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/new");
    stage.forget();
    stage.answer(RunOpened{ticket, "run-2", "/new/.incoming/run-2", -1});
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().at(0).run, "run-2");
}

TEST(BrainEnding, AChangeThatIsUnderWayIsAnsweredOnce) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId configure = stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.ask(Shutdown{});
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Problem>(configure),
              (Problem{Code::cancelled, "The session is being ended.", {}, {}}));
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().at(0).folder, "/new");
}

TEST(BrainEnding, AWorkerThatDiesMeanwhileIsToldAsGone) {
    ReadyStage stage;
    stage.shoot();
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 139});
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::gone, 139}));
    EXPECT_TRUE(stage.workers().empty());
}

TEST(BrainEnding, AWorkerThatIsGivenUpMeanwhileIsNotReplaced) {
    ReadyStage stage;
    stage.shoot();
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.tell(WorkerFlooded{stage.run, "much"});
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::quit, 0}));
    EXPECT_EQ(stage.states(), (States{State::ending, State::down}));
}

TEST(BrainEnding, AWorkerThatIsBeingReplacedIsWaitedFor) {
    ReadyStage stage;
    stage.worker_ends = false;
    stage.tell(WorkerFlooded{stage.run, "much"});
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_FALSE(stage.is_answered(shutdown));
    EXPECT_EQ(stage.ladders().size(), 1U) << "it is on the ladder already";
    stage.tell(WorkerEnded{stage.run, WorkerEnd::sigterm, 143});
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::sigterm, 143}));
    EXPECT_TRUE(stage.workers().empty());
}

TEST(BrainEnding, AWorkerThatIsBeingStartedIsEnded) {
    Stage stage;
    stage.worker_gets_ready = false;
    const RequestId start = stage.ask(Start{});
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answer_to<Problem>(start).code, Code::cancelled);
    EXPECT_EQ(stage.answer_to<Ended>(shutdown).worker, WorkerEnd::quit);
}

TEST(BrainEnding, AWorkerThatCannotBeStartedIsNoProblemAnyMore) {
    Stage stage;
    stage.disk_answers = false;
    stage.worker_ends = false;
    stage.ask(Start{});
    const FolderOpened opened = stage.opened("/shots");
    stage.brain.tell(opened, stage.now);
    stage.brain.tell(RunOpened{2, "r", "/shots/.incoming/r", 7}, stage.now);
    stage.brain.take();  // nobody starts it
    stage.ask(Shutdown{});
    stage.tell(WorkerNotStarted{"r", "No such file."});
    EXPECT_EQ(stage.state().state, State::ending) << "its folder is being swept";
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainEnding, AWorkerWhoseRunIsBeingMadeIsNotStarted) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    stage.answer(stage.opened("/shots"));
    ASSERT_EQ(stage.asked_of_disk<OpenRun>().size(), 1U);
    EXPECT_EQ(stage.answer_to<Ended>(stage.ask(Shutdown{})), (Ended{WorkerEnd::gone, 0}));
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.workers().empty());
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().at(0).run, "run-1");
}

TEST(BrainEnding, AFolderThatIsNotOpenedIsNoProblemAnyMore) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    stage.ask(Shutdown{});
    stage.refuse_folder(Code::folder_in_use, "in use");
    EXPECT_TRUE(stage.state().problems.empty());
    EXPECT_EQ(stage.brain.wake_at(), never);
}

TEST(BrainEnding, AFolderThatIsOpenedTooLateIsClosedAgain) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    const RequestId shutdown = stage.ask(Shutdown{});
    EXPECT_EQ(stage.answers(shutdown), 1U);
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>().size(), 1U);
    EXPECT_TRUE(stage.workers().empty());
}

TEST(BrainEnding, AWorkerThatNothingEndsIsNamedAndNotWaitedForForEver) {
    ReadyStage stage;
    stage.worker_ends = false;
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.hear("PRIME_DONE|OK");  // more than it was asked
    stage.after(seconds(16));
    EXPECT_FALSE(stage.is_answered(shutdown));
    stage.after(seconds(2));
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::sigkill, 128 + 9}));
    EXPECT_TRUE(stage.told(Code::worker_hangs));
}

TEST(BrainEnding, AFileOfAWorkerThatNothingEndsIsWaitedFor) {
    ReadyStage stage;
    stage.shoot();
    stage.worker_ends = false;
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.after(seconds(28));
    ASSERT_TRUE(stage.told(Code::worker_hangs)) << "10 s for its files, 17 s to end it";
    EXPECT_FALSE(stage.is_answered(shutdown));
    stage.disk_answers = true;
    stage.after(Time{});
    EXPECT_EQ(stage.pictures().size(), 1U);
    EXPECT_EQ(stage.answers(shutdown), 1U);
}

TEST(BrainEnding, OneThatNothingEndsAndThatIsOnTheLadderAlreadyIsWaitedForLessLong) {
    ReadyStage stage;
    stage.worker_ends = false;
    stage.tell(WorkerFlooded{stage.run, "much"});
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.after(milliseconds(4'999));
    EXPECT_FALSE(stage.is_answered(shutdown));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Ended>(shutdown).worker, WorkerEnd::sigkill);
}

TEST(BrainEnding, AStuckDiskDoesNotKeepTheEndFromBeingTold) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.after(milliseconds(29'999));
    EXPECT_FALSE(stage.is_answered(shutdown));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answers(shutdown), 1U);
    EXPECT_EQ(stage.state().state, State::down);
}

TEST(BrainEnding, AShotWhoseFileAStuckDiskKeepsIsAnsweredBeforeTheEndIsTold) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    stage.tell(WorkerFlooded{stage.run, "much"});
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.after(seconds(31));
    EXPECT_EQ(stage.answer_to<Shot>(capture).problems.at(0).text, "The session was ended.");
    EXPECT_EQ(stage.answers(shutdown), 1U);
}

TEST(BrainEnding, AStopPastTheTimeOutLeavesAMomentToEndTheWorkerInOrder) {
    for (const bool ends : {true, false}) {
        ReadyStage stage;
        stage.worker_ends = ends;
        stage.shoot();
        const RequestId end = stage.ask(Shutdown{});
        stage.stand_still(seconds(100));
        stage.after(seconds(1));
        if (const auto how = stage.answer_to<Ended>(end); ends) {
            EXPECT_EQ(how, (Ended{WorkerEnd::quit, 0}));
        }
        EXPECT_EQ(stage.brain.wake_at(), never);
    }
}

}  // namespace
}  // namespace host::brain
