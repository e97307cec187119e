// A record played to a host that says what was recorded, and to one that does not.
#include "tether/replay/player.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tether/replay/story.h"

namespace {

using namespace std::chrono_literals;
using replay::Fate;

constexpr const char* heading =
    "0.000 # 2026-11-22 11:04:29 UTC, Linux 6.1, tether 1.0.0, record 1\n";

replay::Story story_of(const std::string& lines) {
    std::string error;
    auto story = replay::read_story(heading + lines, error);
    EXPECT_TRUE(story) << error;
    return story.value_or(replay::Story{{{}}});
}

// A host and its worker: everything that happens is written down.
class Play {
  public:
    explicit Play(const std::string& lines, bool fast = false, const std::string& folder = "")
        : story_(story_of(lines)), player_(story_.runs.front(), fast, folder, actions(), now_) {
        next_ = player_.play(now_);
    }

    Play& host(const std::string& line) {
        player_.hear(line);
        next_ = player_.play(now_);
        return *this;
    }
    Play& close() {
        player_.end_of_input();
        next_ = player_.play(now_);
        return *this;
    }
    Play& wait(std::chrono::milliseconds time) {
        const auto until = now_ + time;
        while (next_ <= until) {
            now_ = std::max(now_, next_);
            next_ = player_.play(now_);
        }
        now_ = until;
        next_ = player_.play(now_);
        return *this;
    }
    // What has happened since the last look.
    std::vector<std::string> seen() {
        return std::exchange(seen_, {});
    }

  private:
    replay::Actions actions() {
        return {
            [this](const replay::Step&, const std::string& text) { seen_.push_back("< " + text); },
            [this](const std::string& path, Fate fate) {
                seen_.push_back((fate == Fate::whole     ? "whole "
                                 : fate == Fate::damaged ? "damaged "
                                                         : "missing ") +
                                path);
            },
            [this](std::size_t line, const std::string& sentence) {
                seen_.push_back(std::to_string(line) + ": " + sentence);
            },
            [this](const replay::Ending& ending) {
                seen_.push_back("end " + std::to_string(ending.wait_status));
            },
        };
    }

    const replay::Story story_;
    host::TimePoint now_{1h};
    std::vector<std::string> seen_;
    replay::Player player_;
    host::TimePoint next_;
};

using Seen = std::vector<std::string>;

constexpr const char* short_talk =
    "0.100 < CPP_WORKER|START sony-1.0\n"
    "0.300 < READY|OK\n"
    "0.350 > CONNECT\n"
    "0.850 < CONNECTED|A\n"
    "1.000 > QUIT\n"
    "1.200 # the worker ended with status 0\n";

TEST(Player, LinesComeAtTheirDistancesBehindTheHostsLine) {
    Play play(short_talk);
    EXPECT_EQ(play.seen(), Seen{"< CPP_WORKER|START sony-1.0"});
    EXPECT_EQ(play.wait(199ms).seen(), Seen{});
    EXPECT_EQ(play.wait(1ms).seen(), Seen{"< READY|OK"});
    EXPECT_EQ(play.wait(1h).seen(), Seen{}) << "nothing before the host has spoken";
    EXPECT_EQ(play.host("CONNECT").wait(499ms).seen(), Seen{});
    EXPECT_EQ(play.wait(1ms).seen(), Seen{"< CONNECTED|A"});
    EXPECT_EQ(play.host("QUIT").wait(200ms).seen(), Seen{"end 0"});
}

TEST(Player, FastLinesComeAtOnce) {
    Play play(short_talk, true);
    EXPECT_EQ(play.seen(), (Seen{"< CPP_WORKER|START sony-1.0", "< READY|OK"}));
    EXPECT_EQ(play.host("CONNECT").seen(), Seen{"< CONNECTED|A"});
    EXPECT_EQ(play.host("QUIT").seen(), Seen{"end 0"});
}

TEST(Player, AShutterTakesItsTimeAlsoWhenItIsFast) {
    Play play("0.1 > CAPTURE\n0.9 < REMOTE_CAPTURED|OK\n", true);
    play.host("CAPTURE");
    EXPECT_EQ(play.wait(734ms).seen(), Seen{});
    EXPECT_EQ(play.wait(1ms).seen(), Seen{"< REMOTE_CAPTURED|OK"});
}

TEST(Player, AHostThatIsEarlyIsAnsweredInTheOrderOfTheRecord) {
    Play play(short_talk);
    EXPECT_EQ(play.host("CONNECT").host("QUIT").wait(1h).seen(),
              (Seen{"< CPP_WORKER|START sony-1.0", "< READY|OK", "< CONNECTED|A", "end 0"}));
}

TEST(Player, TheFolderIsTheHostsAndFilesAreMadeInIt) {
    Play play(
        "0.1 > SET_DOWNLOAD_DIR|/recorded/a%7Cb\n"
        "0.1 < DOWNLOAD_DIR|/recorded/a%7Cb\n"
        "0.1 < DOWNLOADED|/recorded/a%7Cb/1.JPG\n"
        "0.1 < DOWNLOADED|/elsewhere/2.JPG\n"
        "0.1 < DOWNLOADED|/recorded/a%7Cb/3.JPG\n"
        "0.1 # problem picture-damaged: ...\n"
        "0.1 < DOWNLOADED|/recorded/a%7Cb/4.ARW\n"
        "0.1 # problem picture-not-there: ...\n");
    EXPECT_EQ(play.host("SET_DOWNLOAD_DIR|/mine/c%25").seen(),
              (Seen{"< DOWNLOAD_DIR|/mine/c%25", "whole /mine/c%/1.JPG",
                    "< DOWNLOADED|/mine/c%25/1.JPG", "< DOWNLOADED|/elsewhere/2.JPG",
                    "damaged /mine/c%/3.JPG", "< DOWNLOADED|/mine/c%25/3.JPG",
                    "missing /mine/c%/4.ARW", "< DOWNLOADED|/mine/c%25/4.ARW"}));
}

TEST(Player, AHostThatAsksInALongSilenceIsAnswered) {
    Play play(
        "0.1 < READY|OK\n40.0 < LOG|late\n61.0 > PRIME\n61.0 < PRIME_DONE|OK\n62.0 > QUIT\n"
        "62.1 # the worker ended with status 0\n");
    EXPECT_EQ(play.wait(1s).seen(), Seen{"< READY|OK"});
    EXPECT_EQ(play.host("PRIME").seen(), Seen{"< PRIME_DONE|OK"});
    EXPECT_EQ(play.host("PRIME").seen(), Seen{"< PRIME_DONE|OK"});
    EXPECT_EQ(play.wait(40s).seen(), Seen{"< LOG|late"});
    EXPECT_EQ(play.host("QUIT").wait(1h).seen(), Seen{"end 0"});
}

TEST(Player, AHostThatLeavesInALongSilenceIsNotHeld) {
    const std::string silence = "0.1 < READY|OK\n90000.0 < LOG|late\n90001.0 > QUIT\n";
    EXPECT_EQ(Play(silence).wait(1s).close().seen(), (Seen{"< READY|OK", "end 0"}));
    EXPECT_EQ(Play(silence).wait(1s).host("QUIT").seen(), (Seen{"< READY|OK", "end 0"}));
    Play slow("0.1 < READY|OK\n1.0 > QUIT\n9.0 < LOG|late\n9.1 # the worker ended with status 0\n");
    EXPECT_EQ(slow.wait(1s).host("QUIT").close().seen(), Seen{"< READY|OK"}) << "as the worker did";
    EXPECT_EQ(slow.wait(1h).seen(), (Seen{"< LOG|late", "end 0"}));
}

TEST(Story, AnotherFormatOrNoneIsRefused) {
    for (const std::string first :
         {"0.000 # now, tether 1.0.0, record 2", "0.000 # now, tether 1.0.0, record 1x",
          "0.000 # now, record 99999999999999999999", "0.000 # now, tether 1.0.0",
          "0.000 < READY|OK, record 1"}) {
        std::string error;
        EXPECT_FALSE(replay::read_story(first + "\n0.1 < READY|OK\n", error)) << first;
        EXPECT_NE(error, "") << first;
    }
}

TEST(Player, OfSeveralFilesEachHasTheFateThatWasToldOfIt) {
    Play play(
        "0.1 > SET_DOWNLOAD_DIR|/recorded\n"
        "0.1 < DOWNLOADED|/recorded/1.JPG\n"
        "0.1 < DOWNLOADED|/recorded/2.JPG\n"
        "0.1 < DOWNLOADED|/recorded/3.JPG\n"
        "0.1 # problem picture-not-there: A picture was reported that is not there: 1.JPG\n"
        "0.1 # problem picture-damaged: A picture is damaged: 2.JPG\n");
    EXPECT_EQ(play.host("SET_DOWNLOAD_DIR|/mine").seen(),
              (Seen{"missing /mine/1.JPG", "< DOWNLOADED|/mine/1.JPG", "damaged /mine/2.JPG",
                    "< DOWNLOADED|/mine/2.JPG", "whole /mine/3.JPG", "< DOWNLOADED|/mine/3.JPG"}));
}

// Nobody said how the first ended, and the second's standard error was seen before its first line.
TEST(Story, WhatAWorkerWritesBeforeItsFirstLineIsItsOwn) {
    const replay::Story story = story_of(
        "0.100 < CPP_WORKER|START sony-1.0\n"
        "0.101 ! the last words of the first\n"
        "0.119 ! the first words of the second\n"
        "0.120 < CPP_WORKER|START sony-1.0\n");
    ASSERT_EQ(story.runs.size(), 2u);
    ASSERT_EQ(story.runs[0].steps.size(), 2u);
    EXPECT_EQ(story.runs[0].steps[1].text, "the last words of the first");
    ASSERT_EQ(story.runs[1].steps.size(), 2u);
    EXPECT_EQ(story.runs[1].steps[0].text, "the first words of the second");
}

TEST(Player, TheFolderThatTheWorkerIsStartedWithCountsToo) {
    Play play("0.1 < DOWNLOADED|/recorded/1.JPG\n", false, "/mine");
    EXPECT_EQ(play.seen(), (Seen{"whole /mine/1.JPG", "< DOWNLOADED|/mine/1.JPG"}));
    Play none("0.1 < DOWNLOADED|/recorded/1.JPG\n");
    EXPECT_EQ(none.seen(), Seen{"< DOWNLOADED|/recorded/1.JPG"}) << "no folder, no file";
}

TEST(Player, SomethingElseIsToldWithTheLineThatWasExpected) {
    Play play(short_talk, true);
    play.seen();
    EXPECT_EQ(play.host("SET_FILE_TYPE|raw").seen(),
              Seen{"4: expected \"CONNECT\", the host said \"SET_FILE_TYPE|raw\""});
    EXPECT_EQ(play.host("CONNECT").seen(), Seen{"< CONNECTED|A"}) << "it goes on";
    Play leaving(short_talk, true);
    leaving.seen();
    EXPECT_EQ(leaving.host("QUIT").seen(),
              (Seen{"4: expected \"CONNECT\", the host said \"QUIT\"", "< CONNECTED|A", "end 0"}))
        << "what lies between is said at once";
}

TEST(Player, AFenceMoreOrLessIsNoDifference) {
    const std::string fenced =
        "0.1 > PRIME\n0.1 < PRIME_DONE|OK\n0.1 > CAPTURE\n1.0 < REMOTE_CAPTURED|OK\n";
    Play with(fenced, true);
    EXPECT_EQ(with.host("PRIME").seen(), Seen{"< PRIME_DONE|OK"});
    EXPECT_EQ(with.host("PRIME").seen(), Seen{"< PRIME_DONE|OK"}) << "one more";
    EXPECT_EQ(with.host("CAPTURE").wait(1s).seen(), Seen{"< REMOTE_CAPTURED|OK"});
    Play without(fenced, true);
    EXPECT_EQ(without.host("CAPTURE").wait(1s).seen(), Seen{"< REMOTE_CAPTURED|OK"}) << "one less";
}

TEST(Player, AFenceThatDoesNotComeHoldsNothingUp) {
    Play play("0.1 < A|\n5.1 > PRIME\n5.2 < PRIME_DONE|OK\n6.0 < DISCONNECTED|\n");
    EXPECT_EQ(play.wait(6999ms).seen(), Seen{"< A|"});
    EXPECT_EQ(play.wait(1900ms).seen(), Seen{"< DISCONNECTED|"});
}

TEST(Player, TheEndOfTheInputEndsIt) {
    Play play(short_talk, true);
    play.seen();
    EXPECT_EQ(play.close().seen(), Seen{"end 0"});
}

TEST(Player, ItEndsAsTheRecordedWorkerEnded) {
    EXPECT_EQ(Play("0.1 < A|\n0.2 # the worker ended with status 3\n", true).seen(),
              (Seen{"< A|", "end 768"}));
    EXPECT_EQ(Play("0.1 < A|\n0.2 # the worker ended with signal 9\n", true).seen(),
              (Seen{"< A|", "end 9"}));
    EXPECT_EQ(
        Play("0.1 < A|\n0.2 # problem worker-gone: The worker ended by itself (signal 11).\n", true)
            .seen(),
        (Seen{"< A|", "end 11"}));
}

TEST(Player, OneThatHadToBeKilledDoesNotEnd) {
    Play play("0.1 < A|\n0.2 > QUIT\n9.0 # the worker had to be killed\n", true);
    EXPECT_EQ(play.host("QUIT").close().wait(1h).seen(), Seen{"< A|"});
}

TEST(Player, BehindTheRecordItAnswersFencesAndLeavesWhenItIsTold) {
    Play play("0.1 < A|\n", true);
    EXPECT_EQ(play.host("PRIME").host("CAPTURE").host("QUIT").seen(),
              (Seen{"< A|", "< PRIME_DONE|OK",
                    "0: the record ends before the host said \"CAPTURE\"", "end 0"}));
}

TEST(Story, EachWorkerOfARecordIsARun) {
    const auto story = story_of(
        "0.1 < CPP_WORKER|START sony-1.0\n0.2 > CONNECT\n"
        "0.3 # problem worker-gone: The worker ended by itself (signal 9). It is started again.\n"
        "0.8 < CPP_WORKER|START sony-1.0\n0.9 > QUIT\n"
        "1.0 < CPP_WORKER|START sony-1.0\n1.9 # the worker ended in order\n");
    ASSERT_EQ(story.runs.size(), 3u);
    EXPECT_EQ(story.runs[0].steps.size(), 2u);
    EXPECT_EQ(story.runs[0].ending.wait_status, 9);
    EXPECT_EQ(story.runs[1].ending.kind, replay::Ending::Kind::unknown);
    EXPECT_EQ(story.runs[2].ending.kind, replay::Ending::Kind::status);
}

TEST(Story, AWorkerThatHungIsARunWithWhatItSaidWhileItWasEnded) {
    const auto story = story_of(
        "0.1 < CPP_WORKER|START sony-1.0\n0.2 > CONNECT\n"
        "15.0 # problem worker-hangs: The worker has not answered for 15 s.\n15.0 > QUIT\n"
        "17.0 < LOG|[SONY] signal 15 — closing the camera session before exit\n"
        "18.0 < CPP_WORKER|START sony-1.0\n");
    ASSERT_EQ(story.runs.size(), 2u);
    EXPECT_EQ(story.runs[0].steps.size(), 4u);
    EXPECT_EQ(story.runs[0].ending.kind, replay::Ending::Kind::hangs);
}

TEST(Story, AWorkerWithoutAnSdkLeftWithStatus1) {
    const auto story = story_of(
        "0.1 < CPP_WORKER|START sony-1.0\n"
        "0.2 < ERROR|Sony Camera Remote SDK failed to initialise\n"
        "0.3 # the worker ended in order\n");
    EXPECT_EQ(story.runs[0].ending.wait_status, 1 << 8);
}

TEST(Story, OthersThatEndedLikeTheLastOneAreNotCounted) {
    const auto story = story_of(
        "0.1 ! a mistake\n0.2 # problem worker-gone: The worker ended by itself (signal 6).\n"
        "0.3 ! a mistake\n0.4 ! a mistake\n");
    EXPECT_EQ(story.runs.size(), 1u);
}

TEST(Story, AWorkerBetweenOthersThatDiedDiedLikeTheOneBefore) {
    const auto story = story_of(
        "0.1 < CPP_WORKER|START sony-1.0\n"
        "0.2 # problem worker-gone: The worker ended by itself (signal 6).\n"
        "0.3 < CPP_WORKER|START sony-1.0\n0.4 < CPP_WORKER|START sony-1.0\n0.5 > QUIT\n"
        "0.6 < CPP_WORKER|START sony-1.0\n");
    ASSERT_EQ(story.runs.size(), 4u);
    EXPECT_EQ(story.runs[1].ending.wait_status, 6);
    EXPECT_EQ(story.runs[1].ending.at, std::chrono::milliseconds(300));
    EXPECT_EQ(story.runs[2].ending.kind, replay::Ending::Kind::unknown) << "it was told to leave";
    EXPECT_EQ(story.runs[3].ending.kind, replay::Ending::Kind::unknown);
}

TEST(Story, AWorkerThatSaidNothingIsARunToo) {
    const auto story = story_of(
        "0.1 # problem worker-not-starting: The worker ended before it was ready (status 3).\n"
        "0.8 < CPP_WORKER|START sony-1.0\n");
    ASSERT_EQ(story.runs.size(), 2u);
    EXPECT_TRUE(story.runs[0].steps.empty());
    EXPECT_EQ(story.runs[0].ending.wait_status, 3 << 8);
}

TEST(Story, WhatIsNoRecordIsSaidSo) {
    std::string error;
    EXPECT_FALSE(replay::read_story("", error));
    EXPECT_EQ(error, "it does not begin as a record does");
    EXPECT_FALSE(replay::read_story("\xFF\xD8\xFF", error));
    EXPECT_EQ(error, "it does not begin as a record does");
    EXPECT_FALSE(replay::read_story("0.000 # 2026, tether 9.0.0, record 2\n", error));
    EXPECT_EQ(error, "its format is not 1, and no other is known here");
    EXPECT_FALSE(replay::read_story(std::string(heading) + "0.1 < A|\nnonsense\n", error));
    EXPECT_EQ(error, "line 3 is none of a record");
}

TEST(Story, ARecordCutOffInALineCountsAsFarAsItGoes) {
    std::string error;
    const auto story = replay::read_story(std::string(heading) + "0.100 < A|\n0.2", error);
    ASSERT_TRUE(story) << error;
    EXPECT_EQ(story->runs.front().steps.size(), 1u);
}

}  // namespace
