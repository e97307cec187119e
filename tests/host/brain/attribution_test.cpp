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
    stage.file("DSC00002.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00002.JPG"), 1U);
    EXPECT_FALSE(stage.is_answered(capture)) << "the worker has not answered CAPTURE yet";
    stage.disk_answers = false;
    stage.file("DSC00003.JPG");
    stage.after(milliseconds(50));
    EXPECT_FALSE(stage.is_answered(capture)) << "nor the disk";
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
    stage.file("DSC00002.ARW");
    EXPECT_EQ(shot_of(stage, "DSC00002.ARW"), std::nullopt) << "no half was due";
    stage.ask(Capture{});
    stage.after(milliseconds(650));
    stage.file("DSC00004.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00004.JPG"), 2U);
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
    stage.file("DSC00001.HIF");
    EXPECT_EQ(shot_of(stage, "DSC00001.HIF"), std::nullopt) << "a pair has two halves";
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

TEST(BrainAttribution, AFileOfTheSameKindBehindALossSharesNoDoubt) {
    ReadyStage stage;
    shoot_in_doubt(stage);
    stage.file("DSC00002.JPG");
    stage.lose();
    stage.after(milliseconds(1));
    stage.file("DSC00002.HIF");
    EXPECT_EQ(shot_of(stage, "DSC00002.HIF"), std::nullopt);
    EXPECT_EQ(stage.pictures().size(), 1U) << "the other one is still in doubt";
}

TEST(BrainAttribution, AfterAShotWithoutFilesTheNextOnesFileIsBelievedAfter2Seconds) {
    ReadyStage stage;
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00001.JPG");
    stage.after(seconds(1));
    stage.file("DSC00001.HIF");  // no newer name
    stage.after(milliseconds(979));
    EXPECT_FALSE(stage.is_answered(second)) << "a report may be held for 20 ms";
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::complete);
}

TEST(BrainAttribution, AFileInDoubtIsPlacedOnceWhetherBelievedOrCancelledAndWaitsForNoMovie) {
    for (const bool believed : {true, false}) {
        ReadyStage stage;
        shoot_in_doubt(stage);
        stage.file("DSC00002.JPG");
        stage.disk_answers = false;
        stage.file("DSC00002.MP4");
        const Ticket movie = stage.asked_of_disk<Examine>().back().ticket;
        stage.answer(Examined{movie, Verdict::there, "DSC00002.MP4", "DSC00002"});
        stage.after(seconds(believed ? 2 : 1));
        stage.ask(Cancel{});
        const auto places = stage.asked_of_disk<Place>();
        ASSERT_EQ(places.size(), 2U) << "the movie, and the file";
        EXPECT_EQ(places[1].shot, believed ? std::optional(2U) : std::nullopt);
    }
}

TEST(BrainAttribution, ANewerFileOfThe2SecondsSpeaksAgainstALateOneThoughTheDiskLooksAtItLater) {
    for (const bool within : {true, false}) {
        ReadyStage stage;
        const RequestId second = shoot_in_doubt(stage);
        stage.file("DSC00001.JPG");
        stage.disk_answers = false;
        stage.after(milliseconds(within ? 1979 : 1980));
        stage.file("DSC00002.JPG");
        stage.after(seconds(3));
        stage.disk_answers = true;
        stage.after(seconds(3));
        EXPECT_EQ(stage.answer_to<Shot>(second).pictures.at(0).camera_name,
                  within ? "DSC00002.JPG" : "DSC00001.JPG");
        EXPECT_EQ(shot_of(stage, within ? "DSC00001.JPG" : "DSC00002.JPG"), std::nullopt);
    }
}

TEST(BrainAttribution, ANewerFileBehindALossSpeaksAgainstALateOne) {
    ReadyStage stage;
    const RequestId second = shoot_in_doubt(stage);
    stage.file("DSC00001.JPG");
    stage.lose();
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.state().state, State::lost);
    stage.disk_answers = false;
    stage.file("DSC00002.JPG");
    stage.after(seconds(3));
    EXPECT_FALSE(stage.is_answered(second));
    stage.disk_answers = true;
    stage.after(seconds(1));
    EXPECT_EQ(stage.outcome(second), Outcome(ShotStatus::none, Code::camera_lost));
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
}

TEST(BrainAttribution, AHalfThatTheDiskLooksAtInTheNextSessionFindsTheOther) {
    for (const bool both : {false, true}) {
        ReadyStage stage(Dial{"both"});
        stage.shoot();
        stage.disk_answers = !both;
        stage.file("DSC00001.ARW");
        stage.disk_answers = false;
        stage.file("DSC00001.JPG");
        stage.lose();
        stage.after(seconds(9));
        EXPECT_TRUE(stage.said("CONNECT")) << both;
        EXPECT_EQ(stage.state().state, State::ready) << both;
        stage.disk_answers = true;
        stage.after(seconds(1));
        const auto places = stage.asked_of_disk<Place>();
        ASSERT_EQ(places.size(), 2U) << both;
        EXPECT_EQ(places[1].pair, places[0].pair) << both;
        EXPECT_EQ(places[1].shot, 1U) << both;
    }
}

TEST(BrainAttribution, AHalfThatTheDiskLooksAtInTheNextSessionFindsNoneOfTheSessionBefore) {
    ReadyStage stage(Dial{"both"});
    stage.file("DSC00001.ARW");
    stage.lose();
    stage.after(seconds(9));
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");  // another camera's, perhaps
    stage.lose();
    stage.after(seconds(9));
    stage.disk_answers = true;
    stage.after(seconds(1));
    const auto places = stage.asked_of_disk<Place>();
    ASSERT_EQ(places.size(), 2U);
    EXPECT_NE(places[1].pair, places[0].pair);
}

// A worker dies and leaves "DSC00001.ARW" in doubt. The next one's camera gives the same names, in
// small letters so that the stage's disk can tell them apart.
void leave_in_doubt_with_a_dead_worker(Stage& stage) {
    shoot_in_doubt(stage);
    stage.file("DSC00001.ARW");
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 139});
    stage.after(milliseconds(500));
    ASSERT_EQ(stage.state().state, State::ready);
    ASSERT_TRUE(stage.asked_of_disk<Place>().empty());
}

TEST(BrainAttribution, HalvesFindEachOtherThoughAFileOfTheSessionBeforeGetsOutOfDoubtBetweenThem) {
    ReadyStage stage(Dial{"both"});
    leave_in_doubt_with_a_dead_worker(stage);
    stage.file("dsc00001.ARW");
    stage.after(seconds(3));
    stage.file("dsc00001.JPG");
    const auto places = stage.asked_of_disk<Place>();
    ASSERT_EQ(places.size(), 3U);
    EXPECT_EQ(places[2].pair, places[0].pair);
    EXPECT_NE(places[1].pair, places[0].pair);
}

TEST(BrainAttribution, AHalfOfTheNextSessionSharesNoDoubt) {
    ReadyStage stage(Dial{"both"});
    leave_in_doubt_with_a_dead_worker(stage);
    stage.file("dsc00001.JPG");
    const auto places = stage.asked_of_disk<Place>();
    ASSERT_EQ(places.size(), 1U);
    EXPECT_EQ(places[0].shot, std::nullopt);
    stage.after(seconds(3));
    EXPECT_EQ(stage.asked_of_disk<Place>().size(), 2U);
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
    const Time empty = stage.now + milliseconds(735) + seconds(20);
    shoot_in_doubt(stage);
    stage.file("DSC00002.JPG");
    stage.after(seconds(3));
    const RequestId third = stage.shoot();
    stage.file("DSC00001.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), std::nullopt);
    stage.file("DSC00003.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(third).pictures.at(0).camera_name, "DSC00003.JPG");
    stage.after(empty + minutes(2) - seconds(1) - stage.now);
    stage.ask(Capture{});
    stage.after(seconds(1));
    stage.file("DSC00000.JPG");
    EXPECT_EQ(shot_of(stage, "DSC00000.JPG"), 4U) << "it would be too late a one";
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
    stage.file("DSC00001.MP4");
    stage.after(milliseconds(119'960));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.pictures().at(0).pair, stage.pictures().at(2).pair);
    EXPECT_NE(stage.pictures().at(0).pair, stage.pictures().at(1).pair) << "a movie is no half";
    EXPECT_EQ(stage.pictures().at(2).after, std::nullopt);
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
    stage.file("C0001.MP4");
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.problems().at(0).shot, std::nullopt);
    EXPECT_EQ(stage.problems().at(1).shot, 1U);
    stage.takes_files = true;
    stage.after(seconds(21));
    EXPECT_EQ(stage.outcome(first), (Outcome{ShotStatus::none, Code::picture_not_placed}));
    const RequestId second = stage.shoot();
    stage.report("DSC00001.JPG");
    stage.after(seconds(21));
    EXPECT_EQ(shot_of(stage, "DSC00001.JPG"), 1U);
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::none);
}

TEST(BrainAttribution, OfFilesThatCouldNotBePlacedTheFirst256AreKnownAgain) {
    ReadyStage stage;
    stage.takes_files = false;
    for (std::size_t file = 0; file <= limit::stems; ++file) {
        stage.file("C" + std::to_string(file) + ".MP4");
    }
    stage.report("C255.MP4");
    stage.report("C256.MP4");
    const auto places = stage.asked_of_disk<Place>();
    ASSERT_EQ(places.size(), 259U);
    EXPECT_EQ(places[257].pair, places[255].pair);
    EXPECT_NE(places[258].pair, places[256].pair);
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
