// Stops, sleep, a stuck disk, and what a whole wedding costs.
#include <chrono>

#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;

TEST(BrainTime, AfterAStopOfMoreThan2SecondsTheFirstThingIsAFence) {
    ReadyStage stage;
    EXPECT_EQ(stage.brain.wake_at() - stage.now, seconds(1)) << "no stop of its own making";
    stage.stand_still(milliseconds(2001));
    EXPECT_EQ(stage.said(), (Lines{"PRIME"}));
    EXPECT_EQ(stage.state().state, State::ready);
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
    ReadyStage stage;
    stage.worker_answers = false;
    stage.stand_still(seconds(10));
    stage.ask(Capture{});
    stage.after(seconds(2));
    EXPECT_EQ(stage.said(), (Lines{"PRIME"}));
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.said(), (Lines{"PRIME", "CAPTURE", "PRIME"}));
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
    EXPECT_TRUE(stage.stands(Code::folder_gone)) << "10 s from the first thing that was asked";
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
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
    EXPECT_EQ(stage.asked_of_disk<Examine>().size(), limit::reports);
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.pictures().size(), limit::reports);
    ASSERT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U);
    EXPECT_FALSE(stage.asked_of_disk<SweepRun>()[0].over);
    stage.file("LATER.JPG");
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U);
}

TEST(BrainTime, RequestsThatAreTooManyAreRefused) {
    Stage stage;
    stage.camera_there = false;
    for (std::size_t count = 0; count < limit::requests; ++count) {
        stage.ask(Connect{});
    }
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(Connect{})).code, Code::busy);
    for (const Request& request :
         {Request(Configure{}), Request(Disconnect{}), Request(Shutdown{})}) {
        ReadyStage other;
        other.shoot();
        for (std::size_t count = 0; count < limit::requests; ++count) {
            other.ask(request);
        }
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
}

}  // namespace
}  // namespace host::brain
