// Stops, sleep, a stuck disk, and what a whole wedding costs.
#include <chrono>

#include "host/brain/text.h"
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;
using States = std::vector<State>;

TEST(BrainTime, AfterAStopOfMoreThan2SecondsTheFirstThingIsAFence) {
    ReadyStage stage;
    EXPECT_EQ(stage.brain.wake_at() - stage.now, seconds(1)) << "no stop of its own making";
    stage.stand_still(milliseconds(2001));
    EXPECT_EQ(stage.said(), (Lines{"PRIME"}));
    EXPECT_EQ(stage.state().state, State::ready);
    Stage starting;
    starting.worker_gets_ready = false;
    starting.ask(Start{});
    starting.stand_still(milliseconds(2001));
    EXPECT_TRUE(starting.said().empty()) << "it takes no commands yet";
}

TEST(BrainTime, OnceTheWorkerHasAnsweredBehindAStopDeadlinesStrikeAsBefore) {
    ReadyStage stage;
    stage.unplug();
    stage.after(seconds(1));
    const RequestId capture = stage.ask(expiring(milliseconds(2'500)));
    stage.stand_still(milliseconds(2'100));
    stage.after(milliseconds(1));
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    stage.after(milliseconds(400));
    EXPECT_TRUE(stage.is_answered(capture));
}

// With a worker the brain is called once a second: what is due sooner is not slept through.
TEST(BrainTime, TheBrainWantsToBeCalledWhenSomethingIsDue) {
    struct Due {
        std::string what;
        Time in;
        void (*begin)(Stage& stage);
    };
    for (const Due& due : {
             Due{"the answer to a fence", seconds(15),
                 [](Stage& stage) {
                     stage.get_ready();
                     stage.worker_answers = false;
                     stage.hear("DISCONNECTED|");
                 }},
             Due{"the next fence", seconds(5),
                 [](Stage& stage) {
                     stage.get_ready();
                     stage.hear("DISCONNECTED|");
                 }},
             Due{"the answer to Start", seconds(30),
                 [](Stage& stage) {
                     stage.disk_answers = false;
                     stage.ask(Start{});
                 }},
             Due{"the answer to Configure", seconds(60),
                 [](Stage& stage) {
                     stage.disk_answers = false;
                     stage.ask(Start{});
                     stage.after(seconds(1));
                     stage.ask(type(FileType::raw));
                 }},
             Due{"the end of a shot", milliseconds(735) + seconds(7),
                 [](Stage& stage) {
                     stage.get_ready();
                     Capture capture;
                     capture.patience = seconds(7);
                     stage.ask(capture);
                 }},
             Due{"the end of the patience with files", seconds(8),
                 [](Stage& stage) {
                     stage.get_ready();
                     stage.shoot();
                     stage.ask(Shutdown{seconds(8)});
                 }},
             Due{"the end of a worker that nothing ends", seconds(17),
                 [](Stage& stage) {
                     stage.get_ready();
                     stage.worker_ends = false;
                     stage.ask(Shutdown{});
                 }},
             Due{"the answer to Shutdown", seconds(30),
                 [](Stage& stage) {
                     stage.get_ready();
                     stage.disk_answers = false;
                     stage.ask(Shutdown{});
                 }},
         }) {
        Stage stage;
        due.begin(stage);
        const Time begin = stage.now;
        stage.after(due.in - milliseconds(400));
        EXPECT_EQ(stage.brain.wake_at() - begin, due.in) << due.what;
    }
}

TEST(BrainTime, AStopIsNotHeldAgainstTheWorker) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.after(seconds(6));  // a fence is out
    stage.stand_still(minutes(1));
    stage.after(seconds(1));
    EXPECT_EQ(stage.state().state, State::ready);
    stage.hear("PRIME_DONE|OK");
    stage.hear("PRIME_DONE|OK");
    stage.worker_answers = true;
    stage.after(seconds(60));
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainTime, AFileThatCameDuringAStopCountsForItsShot) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    stage.worker_answers = false;
    stage.now += minutes(5);
    stage.brain.pass(stage.now);
    EXPECT_FALSE(stage.is_answered(capture)) << "first what can be read";
    stage.staged.insert("DSC00001.JPG");
    stage.hear("LOG|[SONY] landed DSC00001.JPG");
    stage.disk_answers = false;
    stage.hear("DOWNLOADED|/shots/.incoming/run-1/DSC00001.JPG");
    stage.hear("PRIME_DONE|OK");
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.is_answered(capture)) << "then what the disk says of it";
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainTime, SleepIsNoticedByTheTimeOfDay) {
    ReadyStage stage;
    stage.tell(TimeOfDayIs{std::chrono::milliseconds(1'700'000'002'000)});
    EXPECT_TRUE(stage.said().empty()) << "it goes on as this clock does";
    stage.tell(TimeOfDayIs{std::chrono::milliseconds(1'700'000'004'000)});
    EXPECT_TRUE(stage.said().empty()) << "2 s are no stop";
    stage.tell(TimeOfDayIs{std::chrono::milliseconds(1'700'000'000'000) + std::chrono::hours(8)});
    EXPECT_EQ(stage.said(), (Lines{"PRIME"}));
}

TEST(BrainTime, NoShotIsFiredAfterAStopBeforeTheWorkerHasAnswered) {
    for (const bool asked_at_once : {true, false}) {
        ReadyStage stage;
        stage.worker_answers = false;
        if (asked_at_once) {
            stage.now += seconds(10);
        } else {
            stage.stand_still(seconds(10));
        }
        stage.ask(Capture{});
        stage.after(seconds(2));
        EXPECT_EQ(stage.said(), (Lines{"PRIME"}));
        stage.hear("PRIME_DONE|OK");
        EXPECT_EQ(stage.said(), (Lines{"PRIME", "CAPTURE", "PRIME"}));
    }
}

TEST(BrainTime, AStuckDiskIsAProblemAndNotASilence) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(5901));
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::refused, Code::expired}));
    EXPECT_EQ(stage.problems().at(0).text, "The folder's disk did not answer in time.");
    stage.file("DSC00001.JPG");
    stage.after(seconds(5));
    EXPECT_EQ(stage.standing(Code::folder_gone).text, "The disk of the folder does not answer.")
        << "10 s from the first thing that was asked";
    EXPECT_EQ(stage.states(), (States{State::ready})) << "a problem is told with the state";
    stage.forget();
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
    EXPECT_EQ(stage.states(), (States{State::ready})) << "so is its end";
}

TEST(BrainTime, EachAnswerOfTheDiskIsWaitedForFromTheOneBeforeOn) {
    ReadyStage stage;
    stage.disk_answers = false;
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 1});  // swept, and the next one's run made
    stage.after(seconds(59));
    stage.answer(RunSwept{stage.asked_of_disk<SweepRun>().at(0).ticket, {}, {}});
    stage.after(milliseconds(9'999));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.stands(Code::folder_gone));
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
}

TEST(BrainTime, TheDiskMayTakeAsLongAsTheNextThingItWasAskedTakes) {
    ReadyStage stage;
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    stage.file("DSC00002.JPG");
    stage.ask(folder("/new"));  // whose lock is waited for
    stage.after(milliseconds(1));
    ASSERT_EQ(stage.asked_of_disk<OpenFolder>().size(), 1U);
    Examined reported_before;
    reported_before.ticket = stage.asked_of_disk<Examine>().at(0).ticket;
    reported_before.verdict = Verdict::reported_before;
    stage.answer(reported_before);
    stage.after(milliseconds(9'999));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
    stage.after(milliseconds(1));
    EXPECT_TRUE(stage.stands(Code::folder_gone));
}

TEST(BrainTime, AnAnswerOfTheDiskThatNobodyAskedForIsNotWaitedOn) {
    Stage stage;
    stage.answer(FolderNotOpened{1, {Code::folder_gone, "/shots", {}, {}}});
    EXPECT_EQ(stage.brain.wake_at(), never);
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainTime, AShotWhoseFileTheDiskDoesNotTakeIsOverInTimeAndThePictureToldLater) {
    for (const bool lost : {false, true}) {
        ReadyStage stage;
        const RequestId capture = stage.shoot();
        stage.disk_answers = false;
        stage.file("DSC00001.JPG");
        if (lost) {
            stage.lose();
        }
        stage.after(milliseconds(15'000 + 20'000 + 900 - 820 - 1));
        EXPECT_FALSE(stage.is_answered(capture));
        stage.after(milliseconds(1));
        EXPECT_EQ(
            stage.answer_to<Shot>(capture).problems.at(0).text,
            lost ? "The camera went away." : "The folder's disk did not take a file in time.");
        stage.disk_answers = true;
        stage.after(seconds(1));
        EXPECT_EQ(stage.pictures().size(), 1U);
    }
}

TEST(BrainTime, ReportsThatAreTooManyAreLeftToASweep) {
    ReadyStage stage;
    stage.disk_answers = false;
    for (int file = 0; file < 3000; ++file) {
        const std::string name = "F" + std::to_string(file) + ".JPG";
        stage.staged.insert(name);
        stage.brain.hear("DOWNLOADED|/shots/.incoming/run-1/" + name, stage.now);
    }
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.asked_of_disk<Examine>().size(), 1024U);
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.pictures().size(), 1024U);
    ASSERT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U);
    EXPECT_FALSE(stage.asked_of_disk<SweepRun>()[0].over);
    stage.file("LATER.JPG");
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U);
}

TEST(BrainTime, RequestsThatAreTooManyAreRefused) {
    for (const Request& request : {Request(Start{}), Request(Connect{})}) {
        Stage stage;
        stage.disk_answers = false;
        RequestId last = 0;
        for (int count = 0; count < 64; ++count) {
            last = stage.ask(request);
        }
        EXPECT_FALSE(stage.is_answered(last));
        EXPECT_EQ(stage.answer_to<Problem>(stage.ask(request)).code, Code::busy);
    }
    for (const Request& request :
         {Request(Configure{}), Request(Disconnect{}), Request(Shutdown{})}) {
        ReadyStage other;
        other.shoot();
        RequestId last = 0;
        for (int count = 0; count < 64; ++count) {
            last = other.ask(request);
        }
        EXPECT_FALSE(other.is_answered(last));
        EXPECT_EQ(other.answer_to<Problem>(other.ask(request)).text,
                  "Too many requests are waiting.");
    }
}

// A brain that is cheap can be played through a hundred thousand afternoons.
TEST(BrainTime, AWeddingOf2000ShotsTakesNoTime) {
    ReadyStage stage;
    const auto begin = std::chrono::steady_clock::now();
    for (int shot = 1; shot <= 2000; ++shot) {
        stage.forget();
        stage.shoot();
        stage.file("DSC" + std::to_string(10'000 + shot) + ".JPG");
        ASSERT_EQ(stage.shots().back().status, ShotStatus::complete);
    }
    const auto took = std::chrono::steady_clock::now() - begin;
    const auto each = std::chrono::duration_cast<std::chrono::microseconds>(took) / 2000;
    RecordProperty("microseconds_a_shot", std::to_string(each.count()));
    EXPECT_LT(took, std::chrono::seconds(20));
}

TEST(BrainTime, ACameraNameIsKeptUpTo256BytesAndNotCutInACharacter) {
    Stage stage;
    stage.camera_name = "x";
    while (stage.camera_name.size() < 60'000) {
        stage.camera_name += "\xE2\x82\xAC";
    }
    stage.get_ready();
    EXPECT_EQ(limit::camera_name, 256U);
    EXPECT_EQ(stage.state().camera, stage.camera_name.substr(0, 256));
    Stage other;
    other.camera_name = stage.camera_name.substr(1);
    other.get_ready();
    EXPECT_EQ(other.state().camera, other.camera_name.substr(0, 255));
    const std::string_view line = "MODEL\x80\x80";
    for (const std::size_t most : {5U, 6U}) {
        EXPECT_EQ(beginning(line.substr(0, 5), most), "MODEL") << "whatever stands behind it";
    }
}

}  // namespace
}  // namespace host::brain
