// Workers that die, hang and flood, in every state.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using States = std::vector<State>;

// A stage in that state, with a camera wanted.
void bring(Stage& stage, State state) {
    switch (state) {
        case State::starting:
            stage.worker_gets_ready = false;
            stage.ask(Connect{});
            break;
        case State::idle:
            stage.camera_there = false;
            stage.ask(Connect{});
            break;
        case State::opening:
            stage.camera_answers = false;
            stage.ask(Connect{});
            break;
        case State::settling:
            stage.takes_destination = false;
            stage.ask(Connect{});
            break;
        case State::lost:
            stage.get_ready();
            stage.lose();
            break;
        case State::closing:
            stage.get_ready();
            stage.worker_answers = false;
            stage.hear("DISCONNECTED|");
            stage.hear("PRIME_DONE|OK");
            stage.after(milliseconds(4001));
            break;
        case State::ready:
        case State::down:
        case State::ending:
            stage.get_ready();
            break;
    }
    if (state != State::ready && state != State::closing) {
        stage.after(milliseconds(30));
    }
    ASSERT_EQ(word(stage.state().state), word(state));
}

constexpr State with_a_worker[] = {State::starting, State::idle, State::opening, State::settling,
                                   State::ready,    State::lost, State::closing};

void heal(Stage& stage) {
    stage.worker_gets_ready = true;
    stage.worker_answers = true;
    stage.worker_ends = true;
    stage.camera_there = true;
    stage.camera_answers = true;
    stage.takes_destination = true;
}

TEST(BrainRestarting, AWorkerThatDiesInAnyStateIsReplacedAndTheSessionComesBack) {
    for (const State state : with_a_worker) {
        Stage stage;
        bring(stage, state);
        heal(stage);
        stage.forget();
        stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 139});
        stage.after(seconds(10));
        EXPECT_EQ(stage.state().state, State::ready) << word(state);
        EXPECT_EQ(stage.state().restarts, 1U) << word(state);
        EXPECT_TRUE(stage.state().problems.empty()) << word(state);
        EXPECT_TRUE(
            stage.told(state == State::starting ? Code::worker_not_starting : Code::worker_gone))
            << word(state);
        EXPECT_EQ(stage.asked_of_disk<SweepRun>().at(0).run, "run-1") << word(state);
        EXPECT_EQ(stage.workers().size(), 1U) << word(state);
    }
}

TEST(BrainRestarting, WhatAWorkerSaidBeforeItsEndIsInItsProblem) {
    ReadyStage stage;
    stage.worker_gets_ready = false;
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 134, "assertion failed"});
    EXPECT_EQ(stage.standing(Code::worker_gone).text,
              "The worker ended by itself (signal 6). It said: \"assertion failed\".");
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 3, "no library"});
    EXPECT_EQ(stage.standing(Code::worker_not_starting).text,
              "The worker ended before it was ready (status 3). It said: \"no library\".");
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 128});
    EXPECT_EQ(stage.standing(Code::worker_not_starting).text,
              "The worker ended before it was ready (status 128).");
}

TEST(BrainRestarting, AWorkerThatHangsInAnyStateIsEndedWith1SecondARungAndReplaced) {
    for (const State state : {State::idle, State::opening, State::settling, State::ready,
                              State::lost, State::closing}) {
        Stage stage;
        bring(stage, state);
        stage.worker_answers = false;
        stage.forget();
        stage.after(seconds(21));
        heal(stage);
        stage.after(seconds(25));
        ASSERT_FALSE(stage.ladders().empty()) << word(state);
        EXPECT_EQ(stage.ladders()[0].rung, seconds(1)) << word(state);
        EXPECT_EQ(stage.ladders()[0].run, "run-1") << word(state);
        EXPECT_TRUE(stage.told(Code::worker_hangs)) << word(state);
        EXPECT_EQ(stage.state().state, State::ready) << word(state);
    }
}

TEST(BrainRestarting, AnIdleSessionIsFencedEvery5Seconds) {
    ReadyStage stage;
    stage.after(seconds(51));
    EXPECT_EQ(stage.said(), std::vector<std::string>(10, "PRIME"));
}

TEST(BrainRestarting, AWorkerThatFloodsIsReplaced) {
    ReadyStage stage;
    const RequestId fired = stage.shoot();
    stage.worker_ends = false;
    stage.tell(WorkerFlooded{stage.run, "50,000 lines in 1 s"});
    EXPECT_EQ(stage.problems().at(0),
              (Problem{Code::worker_floods, "The worker wrote 50,000 lines in 1 s.", {}, {}}));
    EXPECT_EQ(stage.outcome(fired), (Outcome{ShotStatus::none, Code::worker_floods}));
    EXPECT_EQ(stage.state().camera, std::nullopt) << "the session is over before the worker is";
    EXPECT_EQ(stage.state().file_type, (Setting<FileType>{}));
    EXPECT_EQ(stage.ladders().at(0).rung, seconds(1));
    stage.forget();
    stage.disk_answers = false;
    stage.tell(WorkerEnded{stage.run, WorkerEnd::sigterm, 143});
    EXPECT_EQ(stage.states(), States{}) << "the next one is being started since";
    stage.worker_gets_ready = false;
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.states(), States{State::starting}) << "counted";
    EXPECT_EQ(stage.state().restarts, 1U);
}

TEST(BrainRestarting, AWorkerThatTakesNoCommandsIsReplaced) {
    ReadyStage stage;
    stage.tell(WorkerInputFull{stage.run});
    stage.after(seconds(1));
    EXPECT_EQ(stage.problems().at(0).text, "The worker no longer takes commands.");
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainRestarting, ALineThatIsTooLongIsAProblemAndNoReasonToEndTheWorker) {
    ReadyStage stage;
    stage.tell(LineTooLong{stage.run});
    EXPECT_EQ(stage.problems().at(0),
              (Problem{Code::worker_floods, "The worker wrote a line over 64 KiB.", {}, {}}));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_TRUE(stage.ladders().empty());
}

TEST(BrainRestarting, TheSixthLossIn3MinutesMeansDownWithOneProblemAndATryAMinute) {
    ReadyStage stage;
    for (int loss = 0; loss < 5; ++loss) {
        stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 139});
        stage.after(seconds(5));
        EXPECT_EQ(stage.state().state, State::ready) << loss;
    }
    stage.tell(WorkerFlooded{stage.run, "much"});
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::down);
    EXPECT_EQ(stage.state().problems,
              (std::vector<Problem>{{Code::worker_floods,
                                     "The worker wrote much. It happened too often: from now on it "
                                     "is tried once a minute.",
                                     {},
                                     {}}}));
    stage.after(seconds(58));
    EXPECT_EQ(stage.state().state, State::down);
    stage.after(seconds(3));
    EXPECT_EQ(stage.state().state, State::ready) << "an unattended booth heals";
    EXPECT_EQ(stage.state().restarts, 6U);
    EXPECT_TRUE(stage.state().problems.empty());
}

void lose_workers(Stage& stage, int count) {
    for (int loss = 0; loss < count; ++loss) {
        stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
        stage.after(seconds(2));
    }
}

void lose_too_many_workers(Stage& stage) {
    lose_workers(stage, 6);
    ASSERT_EQ(stage.state().state, State::down);
}

TEST(BrainRestarting, NewsOfAWorkerThatHasEndedCountForNothing) {
    const auto tell_all = [](Stage& stage, const std::string& run) {
        stage.forget();
        stage.tell(WorkerFlooded{run, "much"});
        stage.tell(WorkerInputFull{run});
        stage.tell(WorkerEnded{run, WorkerEnd::gone, 1});
        EXPECT_TRUE(stage.ladders().empty());
        EXPECT_TRUE(stage.problems().empty());
        EXPECT_TRUE(stage.states().empty());
        EXPECT_TRUE(stage.asked_of_disk<SweepRun>().empty());
    };
    ReadyStage stage;
    stage.worker_answers = false;
    stage.after(seconds(6));  // a fence is out
    stage.disk_answers = false;
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    tell_all(stage, stage.run);  // the next one's run is being made
    stage.after(seconds(20));
    EXPECT_TRUE(stage.ladders().empty()) << "nobody is waited for";
    stage.worker_answers = true;
    stage.disk_answers = true;
    stage.after(seconds(2));
    lose_workers(stage, 5);
    tell_all(stage, stage.run);
    stage.tell(WorkerNotStarted{stage.run, "No such file."});
    EXPECT_TRUE(stage.states().empty());
}

TEST(BrainRestarting, ConnectTriesAtOnceAfterTooManyLosses) {
    ReadyStage stage;
    lose_too_many_workers(stage);
    const RequestId connect = stage.ask(Connect{});
    stage.after(seconds(2));
    EXPECT_EQ(stage.answer_to<SessionState>(connect).state, State::ready);
}

TEST(BrainRestarting, AWorkerThatHasLived3MinutesAfterTooManyLossesIsReplacedAtOnce) {
    for (const Time life : {milliseconds(179'999), milliseconds(180'000)}) {
        ReadyStage stage;
        lose_too_many_workers(stage);
        stage.after(seconds(58));  // a minute after the loss
        stage.after(life);
        stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
        EXPECT_EQ(stage.state().state, life < minutes(3) ? State::down : State::starting);
    }
}

TEST(BrainRestarting, AShotThatTheWorkerDiesInIsOverAndNotFiredAgain) {
    ReadyStage stage;
    const RequestId fired = stage.shoot("1");
    const RequestId queued = stage.ask(Capture{});
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 137});
    EXPECT_EQ(stage.outcome(fired), (Outcome{ShotStatus::none, Code::worker_gone}));
    stage.after(seconds(2));
    stage.file("DSC00007.JPG");
    stage.after(seconds(3));
    EXPECT_EQ(stage.answer_to<Shot>(queued).status, ShotStatus::complete)
        << "the next one is fired by the new worker";
}

TEST(BrainRestarting, FilesThatWereReportedBeforeTheEndAreNotLeftToTheSweep) {
    ReadyStage stage;
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    const RequestId capture = stage.shoot();
    stage.disk_answers = false;
    stage.hear("LOG|[SONY] landed DSC00001.JPG");
    stage.hear("SAVE_DEST|disk");  // what follows is held
    stage.hear("DOWNLOADED|/new/.incoming/run-2/DSC00001.JPG");
    stage.staged.insert("DSC00001.JPG");
    stage.tell(WorkerEnded{"run-1", WorkerEnd::gone, 137});
    ASSERT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U);
    EXPECT_EQ(stage.asked_of_disk<SweepRun>()[0].run, "run-1") << "nothing was reported of this";
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().at(1).run, "run-2");
    stage.after(seconds(2));
    stage.hear("LOG|[SONY] landed DSC00002.JPG");
    stage.hear("SAVE_DEST|card");
    EXPECT_EQ(stage.state().save_destination.in_force, SaveDestination::disk)
        << "held with the next worker too";
}

TEST(BrainRestarting, WhatTheSweepBringsInIsTold) {
    ReadyStage stage;
    stage.disk_answers = false;
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 137});
    Picture found;
    found.id = "found";
    found.recovered = true;
    stage.answer(RunSwept{stage.asked_of_disk<SweepRun>().at(0).ticket, {found}, {}});
    EXPECT_EQ(stage.pictures().at(0).id, "found");
}

TEST(BrainRestarting, AWorkerThatSurvivesSigkillIsNamedByItsNumberAndReplaced) {
    ReadyStage stage;
    stage.worker_ends = false;
    stage.tell(WorkerFlooded{stage.run, "much"});
    stage.after(milliseconds(4'999));  // three rungs of a second, and two for the system
    EXPECT_EQ(stage.state().state, State::starting);
    EXPECT_EQ(stage.problems().size(), 1U);
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.problems().at(1).text,
              "A worker, process 4711, cannot be ended: it is stuck in the system.");
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.workers().size(), 1U);
    stage.tell(WorkerEnded{"run-1", WorkerEnd::sigkill, 137});
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainRestarting, AStemOfTheWorkerBeforeIsAnotherPicture) {
    ReadyStage stage(Dial{"both"});
    stage.file("DSC00001.ARW");
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    stage.after(seconds(2));
    stage.file("DSC00001.JPG");
    const auto pictures = stage.pictures();
    ASSERT_EQ(pictures.size(), 2U);
    EXPECT_NE(pictures[0].pair, pictures[1].pair);
}

TEST(BrainRestarting, WhatAWorkerBroughtThatEndsAfterItWasGivenUpIsBroughtIn) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.worker_ends = false;
    stage.after(seconds(26));
    ASSERT_TRUE(stage.told(Code::worker_hangs));
    ASSERT_EQ(stage.workers().size(), 1U) << "another one has its place";
    EXPECT_TRUE(stage.asked_of_disk<SweepRun>().empty()) << "it may still write there";
    stage.forget();
    stage.tell(WorkerEnded{"run-1", WorkerEnd::sigkill, 128 + 9});
    const std::vector<SweepRun> swept = stage.asked_of_disk<SweepRun>();
    ASSERT_EQ(swept.size(), 1U);
    EXPECT_EQ(swept.front().run, "run-1");
    EXPECT_TRUE(swept.front().over);
}

TEST(BrainRestarting, AWorkerThatHasNoNumberYetIsNamedWithoutOne) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    FolderOpened opened = stage.opened("/shots");
    stage.brain.tell(opened, stage.now);
    stage.brain.tell(RunOpened{2, "r", "/shots/.incoming/r", 7}, stage.now);
    stage.brain.take();  // nobody starts it
    stage.worker_ends = false;
    stage.after(seconds(15));
    EXPECT_EQ(stage.problems(),
              (std::vector<Problem>{
                  {Code::worker_not_starting,
                   "The worker was started and did not get ready in time.",
                   {},
                   {}},
                  {Code::worker_hangs,
                   "A worker that was being started cannot be ended: it is stuck in the system.",
                   {},
                   {}}}));
}

TEST(BrainRestarting, TheFolderOfAWorkerThatCannotBeEndedIsClosedOnceItHasEnded) {
    ReadyStage stage;
    stage.worker_ends = false;
    stage.tell(WorkerFlooded{"run-1", "much"});
    stage.after(seconds(7));
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    stage.tell(WorkerEnded{"run-2", WorkerEnd::gone, 1});
    EXPECT_TRUE(stage.asked_of_disk<CloseFolder>().empty()) << "the first one may write there";
    stage.tell(WorkerEnded{"run-1", WorkerEnd::sigkill, 137});
    ASSERT_EQ(stage.asked_of_disk<CloseFolder>().size(), 1U);
    EXPECT_EQ(stage.asked_of_disk<CloseFolder>()[0].folder, "/shots");
}

TEST(BrainRestarting, OfWorkersThatCannotBeEndedTheLatest8AreRemembered) {
    for (const int count : {8, 9}) {
        ReadyStage stage;
        stage.worker_ends = false;
        for (int worker = 1; worker <= count; ++worker) {
            stage.tell(WorkerFlooded{stage.run, "much"});
            stage.after(seconds(40));
            ASSERT_EQ(stage.state().state, State::ready) << worker;
        }
        std::vector<std::string> swept;
        std::vector<std::string> expected;
        for (int worker = 1; worker <= count; ++worker) {
            const std::string run = "run-" + std::to_string(worker);
            stage.tell(WorkerEnded{run, WorkerEnd::sigkill, 137});
            if (worker > count - 8) {
                expected.push_back(run);
            }
        }
        for (const SweepRun& sweep : stage.asked_of_disk<SweepRun>()) {
            swept.push_back(sweep.run);
        }
        EXPECT_EQ(swept, expected);
    }
}

TEST(BrainRestarting, AnotherFolderAfterTooManyLossesDoesNotHastenTheNextWorker) {
    ReadyStage stage;
    lose_too_many_workers(stage);
    stage.forget();
    const RequestId request = stage.ask(folder("/new"));
    stage.after(seconds(50));
    EXPECT_EQ(stage.answer_to<SessionState>(request).folder, "/new");
    EXPECT_TRUE(stage.workers().empty());
    stage.after(seconds(15));
    EXPECT_EQ(stage.workers().size(), 1U);
    EXPECT_EQ(stage.state().state, State::ready);
}

TEST(BrainRestarting, AWorkerThatIsLostOnceTooOftenWhileTheSessionEndsIsNotTriedAgain) {
    ReadyStage stage;
    lose_workers(stage, 5);
    stage.shoot();
    const RequestId shutdown = stage.ask(Shutdown{});
    stage.forget();
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});
    EXPECT_EQ(stage.standing(Code::worker_gone).text, "The worker ended by itself (status 1).");
    EXPECT_EQ(stage.answer_to<Ended>(shutdown), (Ended{WorkerEnd::gone, 1}));
}

TEST(BrainRestarting, ASessionThatIsLostWhileItEndsIsToldAsGoneAlsoWithAShotThatIsOut) {
    ReadyStage stage;
    stage.shoot();
    stage.ask(Shutdown{});
    stage.brain.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1}, stage.now);
    std::optional<SessionState> told;
    for (const Effect& effect : stage.brain.take()) {
        if (const auto* changed = std::get_if<StateChanged>(&effect)) {
            told = changed->state;
        }
    }
    ASSERT_TRUE(told);
    EXPECT_EQ(told->state, State::ending) << "what it left is brought in";
    EXPECT_EQ(told->camera, std::nullopt);
}

TEST(BrainRestarting, AChangeOfFolderThatTheEndCutsShortIsNotMadeBecauseTheWorkerDies) {
    ReadyStage stage;
    stage.worker_answers = false;
    const RequestId request = stage.ask(folder("/new"));
    stage.hear("PRIME_DONE|OK");  // the worker is being moved
    stage.disk_answers = false;
    stage.hear("DOWNLOADED|/shots/.incoming/run-1/DSC00001.JPG");
    stage.ask(Shutdown{});
    EXPECT_EQ(stage.answer_to<Problem>(request).code, Code::cancelled);
    stage.tell(WorkerEnded{"run-1", WorkerEnd::gone, 1});
    EXPECT_EQ(stage.state().folder, "/shots");
    ASSERT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U) << "the other has a report open";
    EXPECT_EQ(stage.asked_of_disk<SweepRun>()[0].run, "run-2");
}

}  // namespace
}  // namespace host::brain
