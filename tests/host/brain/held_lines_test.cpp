// Which lines the worker wrote, and which are the rest of a file's name.
#include "host/brain/session/held_lines.h"

#include <ctime>
#include <gtest/gtest.h>
#include <vector>

#include "host/brain/times.h"
#include "host/process/fields.h"

namespace host::brain {
namespace {

using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

class HeldLinesTest : public testing::Test {
  protected:
    void hear(const std::string& text) {
        std::size_t at = 0;
        for (std::size_t end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
            held.hear(text.substr(at, end - at), now);
        }
        held.hear(text.substr(at), now);
    }
    void land(const std::string& name) {
        hear("LOG|[SONY] landed " + name);
        hear("DOWNLOADED|" + escape_field("/f/" + name));
    }
    Lines believed() {
        Lines lines;
        while (auto line = held.next(now)) {
            lines.push_back(line->text);
        }
        return lines;
    }
    Lines in_20_ms() {
        now += milliseconds(20);
        return believed();
    }

    HeldLines held{milliseconds(20)};
    Time now = milliseconds(1000);
};

TEST_F(HeldLinesTest, WhatDoesNotFollowALandedFileIsNotHeld) {
    hear("READY|OK");
    EXPECT_EQ(believed(), (Lines{"READY|OK"}));
    EXPECT_EQ(held.wake_at(), never);
}

TEST_F(HeldLinesTest, WhatFollowsALandedFileIsHeldForItsReportFor20MillisecondsAtMost) {
    hear("LOG|[SONY] landed a.JPG");
    hear("SAVE_DEST|disk");
    now += milliseconds(19);
    hear("DOWNLOADED|/f/a.JPG");
    EXPECT_EQ(believed(), Lines{});
    EXPECT_EQ(held.wake_at(), milliseconds(1020));
    now += milliseconds(1);
    EXPECT_EQ(believed(), (Lines{"SAVE_DEST|disk", "DOWNLOADED|/f/a.JPG"}));
}

TEST_F(HeldLinesTest, AReportRightBehindItsLogLineIsBelievedAtOnce) {
    hear("LOG|[SONY] landed a.JPG");
    EXPECT_EQ(believed(), Lines{});
    hear("DOWNLOADED|/f/a.JPG");
    EXPECT_EQ(believed(), (Lines{"DOWNLOADED|/f/a.JPG"}));
    hear("LOG|[SONY] landed /elsewhere/b%|.JPG");
    hear("DOWNLOADED|/elsewhere/b%25%7C.JPG");
    EXPECT_EQ(believed(), (Lines{"DOWNLOADED|/elsewhere/b%25%7C.JPG"}));
}

TEST_F(HeldLinesTest, AnotherReportRightBehindALogLineMayBeTheRestOfAName) {
    for (const std::string forged : {"DOWNLOADED|/f/b.JPG", "DOWNLOADED|/f/aa", "DOWNLOADED|a",
                                     "DOWNLOADED|a/a", "DOWNLOADED|", "DOWNLOADED|/f/a%0Ab"}) {
        hear("LOG|[SONY] landed a");
        hear(forged);
        EXPECT_EQ(believed(), Lines{}) << forged;
        EXPECT_EQ(in_20_ms(), Lines{forged}) << forged;
    }
    hear("LOG|[SONY] landed ");
    hear("DOWNLOADED|/f/");
    EXPECT_EQ(believed(), Lines{}) << "a name that begins with a break";
}

TEST_F(HeldLinesTest, ALineKeepsTheTimeAtWhichItWasRead) {
    land("a.JPG");
    now += milliseconds(500);
    const auto line = held.next(now);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->at, milliseconds(1000));
}

TEST_F(HeldLinesTest, TheRestOfANameIsDroppedWhateverItLooksLike) {
    for (const std::string name :
         {"a\nDISCONNECTED|", "a\nCONNECTED|x", "a\nREMOTE_CAPTURED|OK", "a\nPRIME_DONE|OK",
          "a\nSAVE_DEST|disk", "a\nFILE_TYPE|raw", "a\nREADY|OK", "a\nERROR|Camera not connected",
          "a\n", "a\nx", "\nDISCONNECTED|", "a\r\nDISCONNECTED|",
          "a.JPG\nDOWNLOADED|/f/a.JPG\nPRIME_DONE|OK", "a\nLOG|[SONY] landed b\nDISCONNECTED|"}) {
        land(name);
        EXPECT_EQ(in_20_ms(), (Lines{"DOWNLOADED|" + escape_field("/f/" + name)})) << name;
    }
}

TEST_F(HeldLinesTest, ALineOfAnotherThreadBetweenTheTwoIsKept) {
    hear("LOG|[SONY] landed a\nDISCONNECTED|");
    hear("SAVE_DEST|disk");
    hear("DOWNLOADED|/f/a%0ADISCONNECTED%7C");
    EXPECT_EQ(in_20_ms(), (Lines{"SAVE_DEST|disk", "DOWNLOADED|/f/a%0ADISCONNECTED%7C"}));
}

TEST_F(HeldLinesTest, AReportOfAnotherFileTakesNoLineAway) {
    for (const std::string other : {"a%0ASAVE_DEST%7Ccard", "ba%0ASAVE_DEST%7Cdisk"}) {
        hear("LOG|[SONY] landed a\nSAVE_DEST|disk");
        hear("DOWNLOADED|/f/" + other);
        EXPECT_EQ(in_20_ms(), (Lines{"SAVE_DEST|disk", "DOWNLOADED|/f/" + other})) << other;
    }
}

TEST_F(HeldLinesTest, TheReportIsFoundHoweverItSpellsThePath) {
    const std::string deep = "/" + std::string(1500, 'd') + "/";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"/elsewhere/a", "/elsewhere/a%0A"},
        {deep + "a", deep + "a%0A"},
        {"a", "a%0A"},
        {"a", "/f/a%0a"},
        {"a", "/f%0Ag/a%0A"},
        {"a", "/f/a%0Ab/a%0A"}};
    for (const auto& [name, path] : cases) {
        hear("LOG|[SONY] landed " + name + "\nDISCONNECTED|");
        hear("DOWNLOADED|" + path + "DISCONNECTED%7C");
        EXPECT_EQ(in_20_ms(), (Lines{"DOWNLOADED|" + path + "DISCONNECTED%7C"})) << path;
    }
}

TEST_F(HeldLinesTest, APathLongerThanAnyFileHasIsNoReport) {
    for (const std::size_t too_long : {0U, 1U}) {
        land("a.JPG");
        hear("DOWNLOADED|" + std::string(4095 + too_long, 'x') + "%0A");
        EXPECT_EQ(believed().size(), 2 * too_long) << "any other is waited for";
        in_20_ms();
    }
}

TEST_F(HeldLinesTest, AFolderWithABreakInItTakesNoLineAway) {
    hear("LOG|[SONY] landed a.JPG");
    hear("DISCONNECTED|");
    hear("DOWNLOADED|" + escape_field("/f\ng/a.JPG"));
    EXPECT_EQ(in_20_ms(), (Lines{"DISCONNECTED|", "DOWNLOADED|/f%0Ag/a.JPG"}));
}

TEST_F(HeldLinesTest, WithoutAReportLinesAreLetGoAfter20Milliseconds) {
    hear("LOG|[SONY] landed a.JPG");
    hear("DISCONNECTED|");
    EXPECT_EQ(in_20_ms(), (Lines{"DISCONNECTED|"}));
}

TEST_F(HeldLinesTest, TwoFilesInOneGoAreBothReported) {
    land("a.ARW");
    land("a.JPG");
    EXPECT_EQ(in_20_ms(), (Lines{"DOWNLOADED|/f/a.ARW", "DOWNLOADED|/f/a.JPG"}));
}

TEST_F(HeldLinesTest, NothingIsHeldOnceTheWorkerHasEnded) {
    land("a\nDISCONNECTED|");
    held.no_more();
    EXPECT_EQ(believed(), (Lines{"DOWNLOADED|/f/a%0ADISCONNECTED%7C"}));
    held.forget();
    hear("LOG|[SONY] landed a\nDISCONNECTED|");
    EXPECT_EQ(believed(), Lines{}) << "the next one has not";
}

TEST_F(HeldLinesTest, TheRestOfACamerasNameIsDroppedWhateverItLooksLike) {
    hear("STATUS|Looking for a camera");
    hear(
        "LOG|[SONY] camera \"X\nPRIME_DONE|OK\nSTATUS|Opening camera session\nCONNECTED|X\n\" over "
        "USB");
    hear("STATUS|Opening camera session");
    hear("SAVE_DEST|disk");
    EXPECT_EQ(believed(), (Lines{"STATUS|Looking for a camera"}));
    EXPECT_EQ(in_20_ms(), (Lines{"STATUS|Opening camera session", "SAVE_DEST|disk"}));
    hear("LOG|[SONY] camera \"X\nCONNECTED|X\n\" over USB");
    hear("STATUS|Opening camera session");
    EXPECT_EQ(in_20_ms(), Lines{"STATUS|Opening camera session"});
}

TEST_F(HeldLinesTest, ACameraThatIsNotOpenedTakesNoLineAway) {
    hear("LOG|[SONY] camera \"X\" over USB");
    hear("ERROR|Camera not detected");
    EXPECT_EQ(in_20_ms(), (Lines{"ERROR|Camera not detected"}));
}

TEST_F(HeldLinesTest, ANameLongerThanAnyFileCanHaveTakesNoLineAway) {
    const std::string longest(1023 - 2, 'b');
    land("a\n" + longest);
    land("a\n" + longest + "b");
    EXPECT_EQ(in_20_ms(), (Lines{"DOWNLOADED|/f/a%0A" + longest, longest + "b",
                                 "DOWNLOADED|/f/a%0A" + longest + "b"}));
}

TEST_F(HeldLinesTest, ANameFullOfForgedReportsIsFoundByItsOwn) {
    std::string name = "a";
    for (const std::string forged = "\nDOWNLOADED|%0A"; name.size() + forged.size() < 1000;) {
        name += forged;
    }
    land(name + "\nDISCONNECTED|");
    EXPECT_EQ(in_20_ms(), Lines{"DOWNLOADED|" + escape_field("/f/" + name + "\nDISCONNECTED|")});
}

// Every name below could be the beginning of every report, and no report explains any.
TEST_F(HeldLinesTest, ThousandsOfNamesWithBreaksAreToldApartInNoTime) {
    std::string path = "/f/";
    for (int line = 0; line < 700; ++line) {
        path += "%0A";
    }
    constexpr int files = 300;
    for (int count = 0; count < files; ++count) {
        hear("LOG|[SONY] landed ");
        hear("\n\n\n");
        hear("DOWNLOADED|" + path);
    }
    now += milliseconds(20);
    const std::clock_t begin = std::clock();  // of this process: others may keep it waiting
    EXPECT_EQ(believed().size(), files * 5U);
    EXPECT_LT(std::clock() - begin, 3 * CLOCKS_PER_SEC);
}

TEST_F(HeldLinesTest, NoMoreThan4096LinesAreHeld) {
    hear("LOG|[SONY] landed a");
    for (int line = 1; line < 4096; ++line) {
        hear("LOG|[SONY] warning 0x00000001");
        ASSERT_EQ(believed(), Lines{}) << line;
    }
    hear("LOG|[SONY] warning 0x00000001");
    EXPECT_EQ(believed().size(), 4096U);
}

TEST_F(HeldLinesTest, NoMoreThanAMebibyteIsHeld) {
    hear("LOG|[SONY] landed a");
    hear(std::string((std::size_t{1} << 20) - 100, 'x'));
    EXPECT_EQ(believed(), Lines{});
    hear(std::string(100, 'x'));
    EXPECT_EQ(believed().size(), 2U);
    hear("LOG|[SONY] landed a");
    hear("SAVE_DEST|disk");
    EXPECT_EQ(believed(), Lines{}) << "what was let go does not count";
    for (int worker = 0; worker < 2; ++worker) {
        held.forget();
        hear("LOG|[SONY] landed a");
        hear(std::string(std::size_t{1} << 19, 'x'));
        hear("DOWNLOADED|/f/b%0A");
    }
    EXPECT_EQ(believed(), Lines{}) << "nor what a worker said that is gone";
    held.forget();
    land("a.JPG");
    EXPECT_EQ(believed(), Lines{"DOWNLOADED|/f/a.JPG"});
}

}  // namespace
}  // namespace host::brain
