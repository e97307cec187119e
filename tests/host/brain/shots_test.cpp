// A shot from the request to its last file.
#include "tests/host/brain/stage.h"

namespace host::brain {
namespace {

using Lines = std::vector<std::string>;

// What was told since it was last asked, in order.
Lines told(Stage& stage) {
    Lines order;
    for (const Effect& effect : stage.brain.take()) {
        if (const auto* state = std::get_if<StateChanged>(&effect)) {
            order.emplace_back(word(state->state.state));
        } else if (const auto* shot = std::get_if<ShotChanged>(&effect)) {
            order.emplace_back(word(shot->shot.status));
        } else if (std::holds_alternative<Reply>(effect)) {
            order.emplace_back("answer");
        }
    }
    return order;
}

TEST(BrainShots, ACaptureIsFiredAndCompleteWhenItsFileIsInItsPlace) {
    ReadyStage stage;
    const RequestId capture = stage.shoot("portrait");
    EXPECT_EQ(stage.said(), (Lines{"CAPTURE", "PRIME"}));
    EXPECT_EQ(stage.shots().at(0).status, ShotStatus::fired);
    EXPECT_EQ(stage.shots().at(0).fired_at, "2023-11-14T22:13:22.000Z");
    stage.file("DSC00001.JPG");
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.number, 1U);
    EXPECT_EQ(shot.tag, "portrait");
    EXPECT_EQ(shot.status, ShotStatus::complete);
    ASSERT_EQ(shot.pictures.size(), 1U);
    EXPECT_EQ(shot.pictures[0].shot, 1U);
    EXPECT_EQ(shot.pictures[0].tag, "portrait");
    EXPECT_EQ(shot.pictures[0].after, milliseconds(800));
    EXPECT_EQ(stage.pictures(), shot.pictures);
    EXPECT_TRUE(stage.asked_of_disk<Told>().empty()) << "only who shows it knows that it was seen";
    EXPECT_EQ(stage.shots().back(), shot);
    EXPECT_TRUE(shot.problems.empty());
}

TEST(BrainShots, AFileIsInItsPlaceAtTheTimeOfItsReport) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    stage.staged.insert("DSC00001.JPG");
    stage.say_landed("DSC00001.JPG", "/shots/.incoming/run-1/");
    EXPECT_EQ(stage.pictures().size(), 1U);
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainShots, TheFolderIsLookedAtBeforeEachShot) {
    ReadyStage stage;
    stage.folder_there = false;
    const RequestId capture = stage.ask(Capture{});
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::refused, Code::folder_gone}));
    stage.file("DSC00001.JPG");
    EXPECT_TRUE(stage.stands(Code::folder_gone)) << "until it is looked at again";
    EXPECT_EQ(stage.times_said("CAPTURE"), 0U);
    stage.folder_there = true;
    stage.ask(Capture{});
    stage.after(milliseconds(1));
    EXPECT_FALSE(stage.stands(Code::folder_gone));
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U);
}

TEST(BrainShots, AFolderThatIsAnotherOneNowIsGone) {
    for (const bool same : {true, false}) {
        ReadyStage stage;
        stage.disk_answers = false;
        const RequestId capture = stage.ask(Capture{});
        const Ticket look = stage.asked_of_disk<LookAtFolder>().at(0).ticket;
        stage.answer(FolderLooked{look, true, same, !same, stage.room});
        EXPECT_EQ(stage.answer_to<Shot>(capture).problems.at(0).text,
                  same ? "The folder cannot be written to."
                       : "The folder was moved, deleted or ejected.");
    }
}

TEST(BrainShots, APairIsCompleteWhenBothHalvesAreThere) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.ARW");
    stage.after(seconds(10));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.file("DSC00001.JPG");
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::complete);
    ASSERT_EQ(shot.pictures.size(), 2U);
    EXPECT_EQ(shot.pictures[0].pair, shot.pictures[1].pair);
    EXPECT_FALSE(shot.pictures[0].pair.empty());
}

TEST(BrainShots, APairInTheOtherOrderIsCompleteToo) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.JPG");
    stage.file("DSC00001.ARW");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainShots, AHalfThatDoesNotComeIsMissedAfterThePatience) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.ARW");
    stage.after(milliseconds(19'970));
    EXPECT_FALSE(stage.is_answered(capture)) << "it begins anew with a file";
    stage.after(milliseconds(200));
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::incomplete, Code::half_missing}));
    EXPECT_EQ(stage.problems().at(0).text, "Only one half of the shot came.");
}

TEST(BrainShots, PatienceBeginsAnewWithAHalfThatIsNotPlacedToo) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.ARW");
    stage.after(seconds(10));
    stage.takes_files = false;
    stage.file("DSC00001.JPG");
    stage.after(milliseconds(19'970));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.after(milliseconds(20));
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::incomplete, Code::picture_not_placed}));
}

TEST(BrainShots, AHalfThatComesLaterIsToldWithItsShotsNumber) {
    ReadyStage stage(Dial{"both"});
    stage.shoot("first");
    stage.file("DSC00001.ARW");
    stage.after(seconds(21));
    const RequestId second = stage.shoot("second");
    stage.after(seconds(10));
    stage.forget();
    stage.file("DSC00001.JPG");
    ASSERT_EQ(stage.pictures().size(), 1U);
    EXPECT_EQ(stage.pictures()[0].shot, 1U);
    EXPECT_EQ(stage.pictures()[0].tag, "first");
    EXPECT_FALSE(stage.is_answered(second));
    stage.after(seconds(10));
    EXPECT_EQ(stage.outcome(second), (Outcome{ShotStatus::none, Code::no_picture}));
}

TEST(BrainShots, RawAndHeifIsAPairAlthoughTheTypeIsOther) {
    ReadyStage stage(Dial{"other"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.ARW");
    stage.after(seconds(4));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.file("DSC00001.HIF");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainShots, WithTypeOtherASingleFileIsAllAfter5Seconds) {
    ReadyStage stage(Dial{"other"});
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.HIF");
    stage.after(milliseconds(5100));
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::complete);
    EXPECT_TRUE(shot.problems.empty());
}

TEST(BrainShots, ADialTurnedDuringTheShotLeavesItOpenWhatIsDue) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot();
    stage.hear("FILE_TYPE|jpeg");
    stage.file("DSC00001.JPG");
    stage.after(seconds(6));
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainShots, ForTheCardItIsCompleteWithoutPicturesOnceItWasFired) {
    ReadyStage stage(wishes(SaveDestination::card));
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(700));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.after(milliseconds(100));
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::complete);
    EXPECT_TRUE(shot.pictures.empty());
}

// Nothing of it is seen here, so whatever the camera warns of may have cost the picture.
TEST(BrainShots, ForTheCardItIsNotCompleteWhenTheCameraWarns) {
    for (const std::string line :
         {"LOG|[SONY] warning 0x00025101", "ERROR|Camera reported 0x00025101"}) {
        ReadyStage stage(wishes(SaveDestination::card));
        const RequestId capture = stage.ask(Capture{});
        stage.after(milliseconds(700));
        stage.hear(line);
        for (const Problem& told : stage.problems()) {
            EXPECT_EQ(told,
                      (Problem{Code::camera_error, "The camera reported an error.", 0x25101, 1}));
        }
        stage.after(milliseconds(100));
        const Shot shot = stage.answer_to<Shot>(capture);
        EXPECT_EQ(shot.status, ShotStatus::none);
        EXPECT_EQ(shot.problems.at(0),
                  (Problem{Code::no_picture,
                           "The card may have no picture of the shot: the camera warned.",
                           0x00025101U, 1}));
    }
}

TEST(BrainShots, WithoutACardTheFilesOfACardShotAreDueOnTheComputer) {
    Stage stage(wishes(SaveDestination::card));
    stage.card = false;
    stage.get_ready();
    const RequestId capture = stage.shoot();
    EXPECT_FALSE(stage.is_answered(capture));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainShots, AShotWithoutAFileIsOverAfterItsPatience) {
    ReadyStage stage;
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(20'700));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.after(milliseconds(100));
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::none);
    EXPECT_EQ(shot.problems.at(0),
              (Problem{Code::no_picture, "The shot brought no picture in time.", {}, 1}));
}

TEST(BrainShots, APatienceOfItsOwnCounts) {
    for (const Time patience : {Time{}, Time(milliseconds(100))}) {
        ReadyStage stage;
        Capture capture;
        capture.patience = patience;
        const RequestId request = stage.ask(capture);
        stage.after(milliseconds(735 + 99));
        EXPECT_FALSE(stage.is_answered(request)) << "it is 100 ms at least";
        stage.after(milliseconds(1));
        EXPECT_EQ(stage.answer_to<Shot>(request).status, ShotStatus::none);
    }
}

TEST(BrainShots, APatienceForEverEndsAfterAnHour) {
    ReadyStage stage;
    Capture capture;
    capture.patience = Time::max();
    const RequestId request = stage.ask(capture);
    stage.after(minutes(60));
    EXPECT_FALSE(stage.is_answered(request));
    stage.after(seconds(1));
    EXPECT_EQ(stage.outcome(request), (Outcome{ShotStatus::none, Code::no_picture}));
}

TEST(BrainShots, AShotWithoutAFileAfterAWarningCarriesItsCode) {
    for (const std::string line : {"LOG|[SONY] warning 0x00025103",
                                   "LOG|[SONY] the camera is showing a caution on its own screen "
                                   "(0x00025103)",
                                   "LOG|[SONY] error 0x00025103 (0x00000001)"}) {
        ReadyStage stage;
        const RequestId capture = stage.shoot();
        stage.hear(line);
        stage.hear("LOG|[SONY] warning 0x251");
        for (char digit = '!'; digit <= '~'; ++digit) {
            if (std::string_view("0123456789ABCDEF").find(digit) == std::string_view::npos) {
                stage.hear(std::string("LOG|[SONY] warning 0x0000000") + digit);
            }
        }
        stage.hear("LOG|[SONY] property 0x00000500 changed");
        stage.after(seconds(21));
        const Problem none = stage.answer_to<Shot>(capture).problems.at(0);
        EXPECT_EQ(none.sdk, 0x25103U) << line;
        EXPECT_EQ(none.text, "The shot brought no picture in time; the camera gave a reason.");
    }
}

TEST(BrainShots, WhatTheCameraSaysBeforeAShotIsFiredIsNoneOfIts) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId capture = stage.ask(Capture{});
    stage.hear("LOG|[SONY] warning 0x00000001");
    stage.hear("ERROR|Camera reported 0x00000002");
    stage.report("DSC00001.JPG");
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    stage.after(seconds(21));
    EXPECT_EQ(
        stage.answer_to<Shot>(capture).problems,
        (std::vector<Problem>{{Code::no_picture, "The shot brought no picture in time.", {}, 1}}));
    ASSERT_EQ(stage.problems().size(), 3U);
    EXPECT_EQ(stage.problems()[0],
              (Problem{Code::camera_error, "The camera reported an error.", 2, {}}));
    EXPECT_EQ(stage.problems()[1].code, Code::picture_not_there);
    EXPECT_EQ(stage.problems()[1].shot, std::nullopt);
}

TEST(BrainShots, ADamagedFileIsShownAndTheShotIncomplete) {
    ReadyStage stage;
    stage.damaged.insert("DSC00001.JPG");
    const RequestId capture = stage.shoot();
    stage.file("DSC00001.JPG");
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::incomplete);
    EXPECT_FALSE(shot.pictures.at(0).whole);
    EXPECT_EQ(shot.problems,
              (std::vector<Problem>{{Code::picture_damaged,
                                     "A picture is damaged: /shots/DSC00001.JPG (cut short)",
                                     {},
                                     1}}));
    EXPECT_EQ(stage.problems(), shot.problems);
    stage.damaged.insert("DSC00002.JPG");
    stage.why.clear();
    stage.file("DSC00002.JPG");
    EXPECT_EQ(
        stage.problems().back(),
        (Problem{Code::picture_damaged, "A picture is damaged: /shots/DSC00002.JPG", {}, {}}));
}

TEST(BrainShots, AMissingFileIsNamedInTheShot) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    stage.report("DSC00001.JPG");
    EXPECT_EQ(stage.problems().at(0).text,
              "A picture was reported that is not there: DSC00001.JPG");
    stage.disk_answers = false;
    stage.report("A.JPG");
    stage.answer(
        Examined{stage.asked_of_disk<Examine>().at(1).ticket, Verdict::not_a_file, "A.JPG"});
    EXPECT_EQ(stage.problems().at(1).text, "What was reported as a picture is no file: A.JPG");
    stage.after(seconds(21));
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::none, Code::picture_not_there}));
}

TEST(BrainShots, AnAnswerOfTheDiskThatNobodyWaitsForComesToNothing) {
    ReadyStage stage;
    stage.shoot();
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    const Examined file{stage.asked_of_disk<Examine>().at(0).ticket, Verdict::there};
    for (const FileAnswer& answer : {FileAnswer(file), FileAnswer(file), FileAnswer(Examined{999}),
                                     FileAnswer(Placed{999, {}}), FileAnswer(NotPlaced{999, {}})}) {
        stage.answer(answer);
    }
    EXPECT_EQ(stage.asked_of_disk<Place>().size(), 1U);
    EXPECT_TRUE(stage.pictures().empty());
    EXPECT_TRUE(stage.problems().empty());
}

TEST(BrainShots, TheFolderOfBeforeIsSweptOnceForAllThatIsMissedAndWhatItLeavesIsTold) {
    ReadyStage stage;
    stage.ask(folder("/new"));
    stage.after(milliseconds(1));
    const Problem left{Code::picture_not_placed, "C0001.MP4 stays where it is.", {}, {}};
    stage.answer(RunSwept{999, {}, {left}});  // nobody waits for it
    EXPECT_EQ(stage.problems().at(0), left);
    stage.disk_answers = false;
    stage.report("DSC00001.JPG");
    stage.report("DSC00002.JPG");
    for (const Examine& missed : stage.asked_of_disk<Examine>()) {
        stage.answer(Examined{missed.ticket, Verdict::not_there});
    }
    EXPECT_EQ(stage.asked_of_disk<SweepRun>().size(), 1U);
}

TEST(BrainShots, AFileIsNotLookedForBeforeThereIsAFolderOfTheWorkers) {
    Stage stage;
    stage.disk_answers = false;
    stage.ask(Start{});
    stage.answer(stage.opened("/shots"));
    stage.say_landed("DSC00001.JPG");
    EXPECT_TRUE(stage.asked_of_disk<Examine>().empty());
}

TEST(BrainShots, AMovieIsPlacedAndNobodyAskedForIt) {
    ReadyStage stage;
    const RequestId capture = stage.shoot();
    stage.file("C0001.MP4");
    EXPECT_EQ(stage.pictures().at(0).shot, std::nullopt);
    EXPECT_FALSE(stage.is_answered(capture));
}

TEST(BrainShots, CapturesAreQueuedAndFiredInOrderTheNextWhenTheOneBeforeIsOver) {
    ReadyStage stage;
    const RequestId first = stage.ask(tagged("1"));
    const RequestId second = stage.ask(tagged("2"));
    stage.after(seconds(4));
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U);
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(first).tag, "1");
    EXPECT_EQ(stage.times_said("CAPTURE"), 2U);
    stage.after(seconds(1));
    stage.file("DSC00002.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(second).pictures.at(0).camera_name, "DSC00002.JPG");
}

TEST(BrainShots, EightCapturesMayWaitAndTheNinthIsRefusedAsBusy) {
    for (const bool fired : {true, false}) {
        ReadyStage stage;
        stage.disk_answers = fired;
        std::vector<RequestId> requests;
        requests.reserve(9);
        for (int count = 0; count < (fired ? 9 : 8); ++count) {
            requests.push_back(stage.ask(Capture{}));
        }
        const RequestId ninth = stage.ask(Capture{});
        const Shot refused = stage.answer_to<Shot>(ninth);
        EXPECT_EQ(refused.status, ShotStatus::refused);
        EXPECT_EQ(refused.problems,
                  (std::vector<Problem>{
                      {Code::busy, "Eight captures are waiting already.", {}, refused.number}}));
        EXPECT_EQ(stage.problems(), refused.problems);
        EXPECT_EQ(stage.shots().back(), refused);
        for (const RequestId request : requests) {
            EXPECT_FALSE(stage.is_answered(request));
        }
    }
}

TEST(BrainShots, BeforeTheSessionWasEverReadyACaptureIsAnError) {
    Stage stage;
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(Capture{})),
              (Problem{Code::not_connected, "No camera has been connected yet.", {}, {}}));
    stage.get_idle();
    EXPECT_EQ(stage.answer_to<Problem>(stage.ask(Capture{})).code, Code::not_connected);
}

TEST(BrainShots, AfterDisconnectACaptureIsRefused) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId not_fired_yet = stage.ask(Capture{});
    stage.ask(Disconnect{});
    EXPECT_EQ(stage.answer_to<Shot>(not_fired_yet).problems,
              (std::vector<Problem>{{Code::not_connected, "Disconnected meanwhile.", {}, 1}}));
    stage.after(seconds(1));
    const Shot later = stage.answer_to<Shot>(stage.ask(Capture{}));
    EXPECT_EQ(later.status, ShotStatus::refused);
    EXPECT_EQ(later.problems,
              (std::vector<Problem>{{Code::not_connected, "No camera is connected.", {}, 2}}));
}

TEST(BrainShots, AShotThatCouldNotBeFiredInTimeIsRefusedAndNeverFired) {
    ReadyStage stage;
    stage.unplug();
    stage.after(seconds(1));
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(4900));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.after(milliseconds(200));
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::refused);
    EXPECT_EQ(shot.problems.at(0),
              (Problem{Code::expired, "The shot could not be fired in time.", {}, 1}));
    EXPECT_EQ(shot.fired_at, "");
    stage.camera_there = true;
    stage.after(minutes(2));
    EXPECT_EQ(stage.state().state, State::ready);
    EXPECT_EQ(stage.times_said("CAPTURE"), 0U);
}

TEST(BrainShots, AShotThatWaitedForTheSessionIsFiredOnceItIsBack) {
    ReadyStage stage;
    stage.lose();
    stage.after(milliseconds(100));
    stage.ask(Capture{});
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.pictures().at(0).shot, std::nullopt);
    stage.after(seconds(2));
    EXPECT_EQ(stage.times_said("CAPTURE"), 0U);
    stage.bring_back();
    stage.after(seconds(1));
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U);
}

TEST(BrainShots, ATimeToExpireOfItsOwnCounts) {
    ReadyStage stage;
    stage.unplug();
    stage.after(seconds(1));
    const RequestId request = stage.ask(expiring(seconds(60)));
    stage.after(seconds(59));
    EXPECT_FALSE(stage.is_answered(request));
    stage.after(seconds(2));
    EXPECT_EQ(stage.answer_to<Shot>(request).problems.at(0).code, Code::expired);
}

TEST(BrainShots, TimeToExpireBeginsWithTheTurn) {
    ReadyStage stage;
    stage.shoot();
    const RequestId second = stage.ask(Capture{});
    stage.after(seconds(19));
    EXPECT_FALSE(stage.is_answered(second));
    stage.after(seconds(2));
    EXPECT_EQ(stage.times_said("CAPTURE"), 2U);
}

TEST(BrainShots, CancelRefusesWhatIsQueued) {
    ReadyStage stage;
    const RequestId first = stage.shoot("1");
    const RequestId second = stage.ask(tagged("2"));
    const RequestId third = stage.ask(tagged("3"));
    stage.ask(tagged("4"));
    EXPECT_EQ(stage.answer_to<Done>(stage.ask(Cancel{"2"})), Done{});
    EXPECT_EQ(stage.answer_to<Shot>(second).problems,
              (std::vector<Problem>{{Code::cancelled, "Cancelled.", {}, 2}}));
    EXPECT_FALSE(stage.is_answered(first));
    EXPECT_FALSE(stage.is_answered(third));
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.shots().back().tag, "3");
}

TEST(BrainShots, CancelEndsAFiredShotNowWithWhatItHas) {
    ReadyStage stage(Dial{"both"});
    const RequestId capture = stage.shoot("1");
    stage.file("DSC00001.ARW");
    stage.ask(Cancel{"1"});
    const Shot shot = stage.answer_to<Shot>(capture);
    EXPECT_EQ(shot.status, ShotStatus::incomplete);
    EXPECT_EQ(shot.pictures.size(), 1U);
    EXPECT_EQ(shot.problems.at(0).code, Code::cancelled);
}

TEST(BrainShots, CancelInEachMomentOfAShotAnswersItOnce) {
    for (int moment = 0; moment < 6; ++moment) {
        ReadyStage stage;
        if (moment == 0) {
            stage.disk_answers = false;  // while the folder is looked at
        }
        const RequestId capture = stage.ask(tagged("1"));
        if (moment >= 2) {
            stage.after(milliseconds(800));
        }
        if (moment == 3) {
            stage.disk_answers = false;  // while its file is examined
            stage.file("DSC00001.JPG");
        }
        if (moment == 4) {
            stage.file("DSC00001.JPG");  // when it is over
        }
        if (moment == 5) {
            stage.lose();  // while a loss is probed
        }
        const RequestId cancel = stage.ask(Cancel{"1"});
        stage.disk_answers = true;
        stage.after(minutes(2));
        EXPECT_EQ(stage.answers(capture), 1U) << moment;
        EXPECT_EQ(stage.answers(cancel), 1U) << moment;
        EXPECT_LE(stage.times_said("CAPTURE"), 1U) << moment;
        EXPECT_EQ(stage.pictures().size(), moment == 3 || moment == 4 ? 1U : 0U) << moment;
    }
}

TEST(BrainShots, TheShotAfterACancelledOneIsNotFiredBeforeTheWorkerIsDoneWithIt) {
    ReadyStage stage;
    stage.ask(tagged("1"));
    stage.ask(tagged("2"));
    stage.after(milliseconds(100));
    stage.ask(Cancel{"1"});
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U);
    stage.after(milliseconds(700));
    EXPECT_EQ(stage.times_said("CAPTURE"), 2U);
}

TEST(BrainShots, CancelOfATagThatNobodyHasIsDone) {
    Stage stage;
    EXPECT_EQ(stage.answer_to<Done>(stage.ask(Cancel{"x"})), Done{});
}

TEST(BrainShots, ACaptureThatTheCameraDidNotTakeIsOverAndTheSessionIsProbed) {
    ReadyStage stage;
    stage.session = false;  // and nobody has said so
    const RequestId capture = stage.shoot();
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::none, Code::camera_lost}));
    EXPECT_EQ(stage.problems().at(0).text, "The camera went away before the shot.");
    EXPECT_EQ(stage.state().state, State::lost);
}

TEST(BrainShots, ACaptureThatTheWorkerPassesOverIsOver) {
    ReadyStage stage;
    stage.hear("ERROR|Camera not connected");  // before the shot
    stage.worker_answers = false;
    const RequestId capture = stage.ask(Capture{});
    stage.ask(Shutdown{});
    stage.hear("REMOTE_CAPTURED|");
    stage.hear("PRIME_DONE|OK");
    EXPECT_EQ(stage.answer_to<Shot>(capture).problems.at(0).text,
              "The worker did not fire the shot.");
    EXPECT_EQ(stage.said(), (Lines{"CAPTURE", "PRIME"})) << "at the end no session is probed";
}

TEST(BrainShots, AShotIsAnsweredAfter15SecondsAlsoWhenTheWorkerHasLonger) {
    ReadyStage stage;
    stage.worker_answers = false;
    stage.after(seconds(5));  // a fence is out
    const RequestId capture = stage.ask(Capture{});
    stage.after(seconds(3));
    stage.hear("PRIME_DONE|OK");
    stage.after(seconds(12));
    EXPECT_EQ(stage.answer_to<Shot>(capture).problems.at(0).text, "The worker does not answer.");
}

TEST(BrainShots, AFileThatCameBeforeTheShutterWasAnsweredCountsThoughTheWorkerDies) {
    ReadyStage stage;
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(700));
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    stage.tell(WorkerEnded{stage.run, WorkerEnd::gone, 137});
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Shot>(capture).status, ShotStatus::complete);
}

TEST(BrainShots, AHangingShotIsAnsweredAfter15Seconds) {
    ReadyStage stage;
    stage.worker_answers = false;
    const RequestId capture = stage.ask(Capture{});
    stage.after(milliseconds(14'900));
    EXPECT_FALSE(stage.is_answered(capture));
    stage.worker_answers = true;
    stage.after(milliseconds(200));
    EXPECT_EQ(stage.outcome(capture), (Outcome{ShotStatus::none, Code::worker_hangs}));
    EXPECT_EQ(stage.problems().at(0).text,
              "The worker has not answered for 15 s. It is replaced by a new one.");
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U) << "CAPTURE is sent once or not at all";
}

TEST(BrainShots, TheStateIsToldBeforeTheShotAndTheAnswerThatFollowFromIt) {
    ReadyStage stage;
    for (const bool there : {false, true}) {
        stage.disk_answers = false;
        stage.ask(Capture{});
        const Ticket look = stage.asked_of_disk<LookAtFolder>().back().ticket;
        stage.brain.tell(FolderLooked{look, there, there, there, stage.room}, stage.now);
        EXPECT_EQ(told(stage),
                  there ? (Lines{"ready", "fired"}) : (Lines{"ready", "refused", "answer"}));
    }
    ReadyStage other;
    other.worker_answers = false;
    other.ask(Disconnect{});
    other.brain.hear("DISCONNECTED|", other.now);
    other.brain.hear("PRIME_DONE|OK", other.now);
    EXPECT_EQ(told(other), (Lines{"idle", "answer"}));
}

TEST(BrainShots, LittleRoomIsAProblemUntilThereIsMore) {
    Stage stage;
    stage.room = (std::uint64_t{2} << 30) - 1;
    stage.get_ready();
    stage.room = std::uint64_t{1} << 30;
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.standing(Code::disk_nearly_full).text,
              "The folder's disk has room for 2047 MiB only.");
    EXPECT_TRUE(stage.problems().empty()) << "it is told once";
    stage.room = std::uint64_t{2} << 30;
    stage.shoot();
    EXPECT_FALSE(stage.stands(Code::disk_nearly_full));
}

TEST(BrainShots, RoomForLessThan50OfTheLastFilesIsAProblem) {
    Stage stage;
    stage.room = std::uint64_t{3} << 30;
    stage.get_ready();
    stage.disk_answers = false;
    stage.shoot();
    stage.after(milliseconds(1));
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    stage.file_size = std::uint64_t{61} << 20;
    stage.file("DSC00001.JPG");
    EXPECT_FALSE(stage.stands(Code::disk_nearly_full));
    stage.file_size = std::uint64_t{70} << 20;
    stage.file("DSC00002.JPG");
    EXPECT_FALSE(stage.stands(Code::disk_nearly_full));
    stage.file_size = 1000;
    for (int small = 3; small < 11; ++small) {
        stage.file("DSC0000" + std::to_string(small) + ".JPG");
        EXPECT_TRUE(stage.stands(Code::disk_nearly_full)) << small;
    }
    stage.file("DSC00011.JPG");
    EXPECT_FALSE(stage.stands(Code::disk_nearly_full)) << "of the last 8";
}

TEST(BrainShots, AShotThatExpiredWhileThisProcessStoodStillIsNotFiredBehindTheStop) {
    ReadyStage stage;
    stage.worker_answers = false;
    const RequestId first = stage.ask(tagged("first"));
    EXPECT_TRUE(stage.said("CAPTURE"));
    const RequestId second = stage.ask(Capture{});
    stage.ask(Cancel{"first"});
    stage.forget();
    stage.stand_still(seconds(12));
    stage.hear("PRIME_DONE|OK");
    stage.hear("PRIME_DONE|OK");
    stage.after(seconds(1));
    EXPECT_FALSE(stage.said("CAPTURE"));
    EXPECT_EQ(stage.answer_to<Shot>(first).status, ShotStatus::none);
    EXPECT_EQ(stage.answer_to<Shot>(second).status, ShotStatus::refused);
}

TEST(BrainShots, ACaptureThatIsToBeFiredNowOrNeverIsFired) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId request = stage.ask(expiring(Time{}));
    stage.after(milliseconds(898));
    EXPECT_FALSE(stage.is_answered(request)) << "the disk is still looking";
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    stage.after(milliseconds(800));
    EXPECT_EQ(stage.times_said("CAPTURE"), 1U);
    stage.file("DSC00001.JPG");
    EXPECT_EQ(stage.answer_to<Shot>(request).status, ShotStatus::complete);
}

TEST(BrainShots, ACaptureThatIsToBeFiredNowOrNeverIsRefusedWhereItCannotBe) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId slow = stage.ask(expiring(Time{}));
    stage.after(milliseconds(901));
    EXPECT_EQ(stage.answer_to<Shot>(slow).problems.at(0).code, Code::expired);
    stage.ask(Capture{});
    const Ticket late = stage.asked_of_disk<LookAtFolder>().at(0).ticket;
    stage.answer(FolderLooked{late, true, true, true, stage.room});
    EXPECT_FALSE(stage.said("CAPTURE")) << "the look was for the one before";
    stage.ask(Cancel{});
    stage.disk_answers = true;
    stage.unplug();
    stage.after(seconds(1));
    const RequestId without_camera = stage.ask(expiring(Time{}));
    stage.after(milliseconds(1));
    EXPECT_EQ(stage.answer_to<Shot>(without_camera).problems.at(0).code, Code::expired);
    EXPECT_EQ(stage.times_said("CAPTURE"), 0U);
}

TEST(BrainShots, AShotFiredAtTheLastMomentIsAnsweredInTimeAllTheSame) {
    ReadyStage stage;
    stage.disk_answers = false;
    const RequestId request = stage.ask(expiring(Time{}));
    stage.after(milliseconds(890));
    stage.disk_answers = true;
    stage.after(milliseconds(1));
    stage.after(milliseconds(10'000));
    stage.disk_answers = false;
    stage.file("DSC00001.JPG");
    const Time time_out = seconds(15) + seconds(20);
    stage.after(time_out + seconds(1) - milliseconds(890 + 1 + 10'000 + 20));
    EXPECT_TRUE(stage.is_answered(request));
}

TEST(BrainShots, AShotKeepsTheFirst63ProblemsAndTheLast) {
    ReadyStage stage;
    const RequestId request = stage.shoot();
    for (int file = 0; file < 1000; ++file) {
        stage.report("F" + std::to_string(file) + ".JPG");
    }
    stage.after(seconds(60));
    const Shot shot = stage.answer_to<Shot>(request);
    ASSERT_EQ(shot.problems.size(), limit::shot_problems);
    EXPECT_NE(shot.problems[0].text.find("F0.JPG"), std::string::npos);
    EXPECT_NE(shot.problems[62].text.find("F62.JPG"), std::string::npos);
    EXPECT_EQ(shot.problems[63].code, Code::no_picture);
    EXPECT_EQ(stage.problems().size(), 1001U) << "each was told";
}

TEST(BrainShots, TheNameOfAFileIsShownUpTo255BytesAndNotCutInACharacter) {
    ReadyStage stage;
    stage.shoot();
    std::string name = "x";
    while (name.size() < 400) {
        name += "\xC3\xA9";
    }
    const std::string shown = name.substr(0, 255);
    const auto text = [&] {
        const std::string told = stage.problems().back().text;
        return told.substr(told.find(": ") + 2);
    };
    stage.report(name);
    EXPECT_EQ(text(), shown);
    stage.report("y" + name);
    EXPECT_EQ(text(), "y" + shown.substr(0, 253));
    stage.say_landed(name, "/etc/");
    stage.after(milliseconds(20));
    EXPECT_EQ(stage.problems().back().code, Code::picture_outside);
    EXPECT_EQ(stage.problems().back().text, "A picture outside the folder was reported: " + shown);
    stage.hear("DOWNLOADED|" + std::string(4096, 'x'));
    EXPECT_EQ(stage.problems().back().code, Code::picture_outside);
    stage.hear("DOWNLOADED|" + std::string(4097, 'x'));
    EXPECT_EQ(stage.problems().back().text,
              "A picture was reported under a path that no file can have.");
    stage.report("xy" + std::string(300, '\x80'));
    EXPECT_EQ(text(), "xy" + std::string(253, '\x80')) << "it is no text at all";
}

TEST(BrainShots, ACaptureThatMayWaitForEverIsRefusedAfterAnHour) {
    ReadyStage stage;
    stage.unplug();
    stage.after(seconds(1));
    const RequestId request = stage.ask(expiring(Time::max()));
    stage.after(minutes(59));
    EXPECT_FALSE(stage.is_answered(request));
    stage.after(minutes(2));
    EXPECT_EQ(stage.answer_to<Shot>(request).problems.at(0).code, Code::expired);
}

}  // namespace
}  // namespace host::brain
