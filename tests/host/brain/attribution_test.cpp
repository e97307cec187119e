// Whose file is it? A shot's only when nothing speaks against it.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

std::optional<std::uint64_t> shot_of(Stage& stage, const std::string& name) {
    for (const Picture& picture : stage.pictures()) {
        if (picture.camera_name == name) {
            return picture.shot;
        }
    }
    ADD_FAILURE() << name << " was not told";
    return 0;
}

// No file came of the shot before it: a late one may be either's.
RequestId shoot_in_doubt(Stage& stage) {
    stage.shoot();
    stage.after(seconds(21));
    return stage.shoot();
}

TEST(BrainAttribution, APictureOfTheButtonOnTheBodyIsUnasked) {
    ReadyStage stage;
    stage.file("DSC00001.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
}

TEST(BrainAttribution, AFileSoonerThan650MillisecondsAfterCaptureIsUnasked) {
    ReadyStage stage;
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(649));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
    stage.after(milliseconds(20));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.file("DSC00002.JPG");  // the worker has not answered CAPTURE yet
    EXPECT_EQ(shot_of(stage, "DSC00002.JPG"), 1U);
}

TEST(BrainAttribution, ItIsTheTimeOfTheReportThatCountsAndNotThatOfTheDisk) {
    ReadyStage stage;
    stage.ask(Capture{});
    stage.after(milliseconds(600));
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    stage.after(seconds(1));
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
}

TEST(BrainAttribution, AnotherStemThanTheShotsOwnIsUnasked) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.ARW");
    stage.file("DSC00002.ARW");
    stage.file("DSC00002.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00002.ARW"), std::nullopt);
    EXPECT_EQ(shot_of(stage, "DSC00002.JPG"), std::nullopt);
    EXPECT_FALSE(stage.is_answered(capture));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainAttribution, AFileReportedTwiceCountsOnce) {
    ReadyStage stage;
    stage.shoot();
    stage.file("DSC00001.JPG");
    const RequestId second = stage.shoot();
    stage.report("DSC00001.JPG");
    stage.after(seconds(3));
    EXPECT_EQ(stage.pictures().size(), 1U);
    EXPECT_FALSE(stage.is_answered(second));
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainAttribution, AFileReportedTwiceBeforeItIsPlacedCountsOnce) {
    ReadyStage stage;
    stage.shoot();
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    stage.report("DSC00001.JPG");
    stage.disk_answers = true;
    stage.after(seconds(1));
    EXPECT_EQ(stage.pictures().size(), 1U);
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainAttribution, AfterAShotWithoutFilesALateFileDoesNotCountForTheNext) {
    ReadyStage stage;
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00001.JPG");  // the first one's, late
    stage.after(seconds(1));
    EXPECT_TRUE(stage.pictures().empty()) << "in doubt";
    stage.file("DSC00002.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
    stage.after(seconds(2));
    EXPECT_EQ(shot_of(stage, "DSC00002.JPG"), 2U);
    EXPECT_EQ(stage.answer_to<Shot>(second).pictures.at(0).camera_name, "DSC00002.JPG");
}

TEST(BrainAttribution, AHalfBehindALossSharesTheDoubtOfTheOtherOne) {
    ReadyStage stage(Dial{"both"});
    stage.hear("FILE_TYPE|both");
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00002.ARW");
    stage.lose();
    stage.after(milliseconds(1));
    ASSERT_EQ(stage.state().state, State::lost);
    stage.file("DSC00002.JPG");
    EXPECT_TRUE(stage.pictures().empty()) << "neither is known to be the shot's yet";
    stage.after(seconds(3));
    const Shot over = stage.answer_to<Shot>(second);
    ASSERT_EQ(over.pictures.size(), 2U);
    EXPECT_EQ(over.pictures[0].pair, over.pictures[1].pair);
    EXPECT_EQ(over.status, ShotStatus::complete);
}

TEST(BrainAttribution, AfterAShotWithoutFilesTheNextOnesFileIsBelievedAfter2Seconds) {
    ReadyStage stage;
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00001.JPG");
    stage.after(milliseconds(1900));
    EXPECT_FALSE(stage.is_answered(second));
    stage.after(milliseconds(100));
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::complete);
}

TEST(BrainAttribution, ANewerFileThatTheDiskHasNotLookedAtInTimeSpeaksAgainstALateOneToo) {
    ReadyStage stage;
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00001.JPG");  // the first one's, late
    stage.after(seconds(1));
    stage.disk_answers = false;
    stage.file("DSC00002.JPG");
    stage.after(seconds(3));
    stage.disk_answers = true;
    stage.after(seconds(3));
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
    EXPECT_EQ(stage.answer_to<Shot>(second).pictures.at(0).camera_name, "DSC00002.JPG");
}

TEST(BrainAttribution, BothHalvesOfALatePairAreUnaskedAndStillAPair) {
    ReadyStage stage(Dial{"both"});
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00001.ARW");
    stage.file("DSC00001.JPG");
    stage.file("DSC00002.ARW");
    stage.file("DSC00002.JPG");
    stage.after(seconds(3));
    const auto pictures = stage.pictures();
    ASSERT_EQ(pictures.size(), 4U);
    EXPECT_EQ(pictures[0].shot, std::nullopt);
    EXPECT_EQ(pictures[1].shot, std::nullopt);
    EXPECT_EQ(pictures[0].pair, pictures[1].pair);
    EXPECT_EQ(pictures[2].pair, pictures[3].pair);
    EXPECT_NE(pictures[0].pair, pictures[2].pair);
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::complete);
}

TEST(BrainAttribution, AnOlderStemBehindTheNewOneIsALateOne) {
    ReadyStage stage;
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00002.JPG");
    stage.file("DSC00001.JPG");
    stage.after(seconds(3));
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
    EXPECT_EQ(stage.answer_to<Shot>(second).pictures.at(0).camera_name, "DSC00002.JPG");
}

TEST(BrainAttribution, ALateFileDoesNotCountForAShotFurtherOnEither) {
    ReadyStage stage;
    shoot_in_doubt(stage);
    stage.file("DSC00002.JPG");
    stage.after(seconds(3));
    const RequestId third = stage.shoot();
    stage.file("DSC00001.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
    stage.file("DSC00003.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(third).pictures.at(0).camera_name, "DSC00003.JPG");
}

TEST(BrainAttribution, ALateFileBetweenTwoShotsIsUnasked) {
    ReadyStage stage;
    stage.shoot();
    stage.after(seconds(21));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
}

TEST(BrainAttribution, ACounterThatIsSetBackDoesNotTakeShotsTheirFiles) {
    ReadyStage stage;
    stage.shoot();
    stage.file("DSC00100.JPG");
    const RequestId second = stage.shoot();
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::complete);
}

TEST(BrainAttribution, ANameThatComesAgainAfter2MinutesMakesNoPairWithTheOldOne) {
    ReadyStage stage(Dial{"both"});
    stage.file("DSC00001.JPG");
    stage.after(minutes(3));
    stage.shoot();
    stage.file("DSC00001.ARW");
    EXPECT_EQ(shot_of(stage, "DSC00001.ARW"), 1U);
    EXPECT_NE(stage.pictures().at(0).pair, stage.pictures().at(1).pair);
}

TEST(BrainAttribution, AHalfMayComeAsLateAsItsShotHasPatience) {
    ReadyStage stage(Dial{"both"});
    Capture capture;
    capture.patience = minutes(10);
    const RequestId request = stage.ask(capture);
    stage.after(seconds(1));
    stage.file("DSC00001.ARW");
    stage.after(minutes(4));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(request).status, ShotStatus::complete);
}

TEST(BrainAttribution, AnotherCamerasPictureOfTheSameNameMakesNoPairWithTheFirstOnes) {
    ReadyStage stage(Dial{"both"});
    stage.file("DSC00001.JPG");
    stage.lose();
    stage.camera_name = "MODEL-B";
    stage.after(seconds(10));
    EXPECT_EQ(stage.state().camera, "MODEL-B");
    stage.shoot();
    stage.file("DSC00001.ARW");
    EXPECT_EQ(shot_of(stage, "DSC00001.ARW"), 1U);
}

TEST(BrainAttribution, AnUnaskedPairIsAPair) {
    ReadyStage stage(Dial{"both"});
    stage.file("DSC00001.ARW");
    stage.after(seconds(119));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.pictures().at(0).pair, stage.pictures().at(1).pair);
}

TEST(BrainAttribution, AShotsNameIsThatOfBothItsHalves) {
    Wishes wishes;
    wishes.name = "{camera}";
    Stage stage(wishes);
    stage.dial = "both";
    stage.get_ready();
    Capture capture;
    capture.name = "wedding/{n:4}";
    stage.ask(capture);
    stage.after(milliseconds(800));
    stage.file("DSC00001.ARW");
    stage.file("DSC00001.JPG");
    stage.file("DSC00002.JPG");
    const auto places = stage.asked_of_disk<Place>();
    ASSERT_EQ(places.size(), 3U);
    EXPECT_EQ(places[0].name, "wedding/{n:4}");
    EXPECT_EQ(places[1].name, "wedding/{n:4}");
    EXPECT_EQ(places[2].name, "{camera}");
}

TEST(BrainAttribution, AFileThatCouldNotBePlacedAndIsReportedAgainIsOfTheShotThatItWasOf) {
    ReadyStage stage;
    const RequestId first = stage.shoot();
    stage.takes_files = false;
    stage.file("DSC00001.JPG");
    stage.takes_files = true;
    stage.after(seconds(21));
    EXPECT_EQ(stage.outcome(first), (Outcome{ShotStatus::none, Code::picture_not_placed}));
    const RequestId second = stage.shoot();
    stage.report("DSC00001.JPG");
    stage.after(seconds(21));
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), 1U);
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::none);
}

TEST(BrainAttribution, ADialTurnedRightAtTheShotMakesAPairOfItsHalves) {
    for (const std::string dial : {"jpeg", "raw"}) {
        ReadyStage stage(Dial{dial});
        const RequestId capture = stage.shoot();
        stage.file(dial == "jpeg" ? "DSC00001.ARW" : "DSC00001.HIF");
        EXPECT_FALSE(stage.is_answered(capture)) << dial;
        stage.file(dial == "jpeg" ? "DSC00001.HIF" : "DSC00001.ARW");
        const Shot shot = stage.answer_to<Shot>(capture);
        EXPECT_EQ(shot.status, ShotStatus::complete) << dial;
        ASSERT_EQ(shot.pictures.size(), 2U) << dial;
        EXPECT_EQ(shot.pictures[0].pair, shot.pictures[1].pair) << dial;
    }
}

}  // namespace
}  // namespace host::brain
