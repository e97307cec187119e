// The callbacks as they stand, their threads and their order.

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

#include "tests/simulator/stage.h"

using namespace SCRSDK;
using Calls = std::vector<std::string>;

TEST(Callbacks, NeedAnApplication) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    for (const char* line : {"connected 3", "disconnected 1", "warning 1", "error 1", "caution",
                             "properties none", "deliver null 0", "storm 2 0x0106", "crowd 2"}) {
        EXPECT_EQ(stage.tell(line), "no application has called Connect") << line;
    }
}

TEST(Callbacks, ComeAsTheyStandAndInOrder) {
    Stage stage;
    stage.open();
    for (const char* line :
         {"connected 3", "connected -1", "disconnected 10", "warning 1", "caution", "error 255",
          "properties 0x0106, 0x0708", "properties none", "properties null 4"}) {
        EXPECT_EQ(stage.tell(line), "") << line;
    }
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (Calls{"OnConnected 3", "OnConnected 3", "OnConnected -1",
                     "OnDisconnected 0x0000000A", "OnWarning 0x00000001", "OnWarning 0x0002008C",
                     "OnError 0x000000FF", "OnPropertyChangedCodes 0x0106 0x0708",
                     "OnPropertyChangedCodes", "OnPropertyChangedCodes null 4"}));
    EXPECT_EQ(stage.set(0x0106, 2), 0U);  // the session has not noticed any of it
    for (const auto& thread : stage.recorder.threads()) {
        EXPECT_EQ(thread, stage.recorder.threads()[0]);
    }
}

TEST(Callbacks, ReportFilesUnderAnyName) {
    Stage stage;
    stage.open();
    for (const char* line : {"deliver a.JPG 0xFFFFFFFF", "deliver \"/tmp/a b.ARW\" 4294967295",
                             "deliver \"a|b%c\\r\\nd\\x01\" 0xFFFFFFFF", "deliver null 0xFFFFFFFF",
                             "deliver \"\" 0xFFFFFFFF", "deliver a.JPG 0"}) {
        EXPECT_EQ(stage.tell(line), "") << line;
    }
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (Calls{"OnConnected 3", "OnCompleteDownload \"a.JPG\" 0xFFFFFFFF",
                     "OnCompleteDownload \"/tmp/a b.ARW\" 0xFFFFFFFF",
                     "OnCompleteDownload \"a|b%c\r\nd\x01\" 0xFFFFFFFF",
                     "OnCompleteDownload null 0xFFFFFFFF", "OnCompleteDownload \"\" 0xFFFFFFFF",
                     "OnCompleteDownload \"a.JPG\" 0x00000000"}));
    EXPECT_EQ(stage.journal()[stage.journal().size() - 4],
              "OnCompleteDownload \"a|b%c\\r\\nd\\x01\" 0xFFFFFFFF -");
}

TEST(Callbacks, CanComeFromASecondThread) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("second warning 1"), "");
    EXPECT_EQ(stage.tell("second dial raw"), "");
    stage.wait();
    EXPECT_EQ(stage.tell("warning 2"), "");
    stage.wait();
    const auto threads = stage.recorder.threads();
    ASSERT_EQ(threads.size(), 4U);
    EXPECT_NE(threads[0], threads[1]);
    EXPECT_EQ(threads[1], threads[2]);
    EXPECT_EQ(threads[0], threads[3]);
    EXPECT_EQ(stage.journal_fields()[stage.journal_fields().size() - 2][2], "sdk-2");
}

TEST(Callbacks, OfTwoThreadsRunAtTheSameTime) {
    std::atomic<int> inside{0};
    Stage stage;
    stage.open();
    stage.recorder.meanwhile = [&inside] {
        ++inside;
        while (inside < 2) {
            std::this_thread::yield();
        }
    };
    EXPECT_EQ(stage.tell("warning 1"), "");
    EXPECT_EQ(stage.tell("second warning 2"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().size(), 3U);
}

TEST(Callbacks, DoNotHoldUpTheCameraWhileTheApplicationIsSlow) {
    std::atomic<bool> go_on{false};
    Stage stage;
    stage.open();
    stage.recorder.meanwhile = [&go_on] {
        while (!go_on) {
            std::this_thread::yield();
        }
    };
    EXPECT_EQ(stage.tell("warning 1"), "");
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
    EXPECT_EQ(stage.tell("dial jpeg"), "");
    EXPECT_EQ(stage.get(0x0106), 1U);
    go_on = true;
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().size(), 4U);
}

TEST(Callbacks, StormFromTwoThreads) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("storm 10000 0x0106 0x0708"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().size(), 10001U);
    const auto threads = stage.recorder.threads();
    const auto first = std::count(threads.begin() + 1, threads.end(), threads[0]);
    EXPECT_EQ(first, 5000);
}

TEST(Callbacks, CrowdOfEightThreads) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("crowd 500"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().size(), 1U + 8 * 500);
    EXPECT_TRUE(stage.recorder.got("OnCompleteDownload \"7-499.JPG\" 0xFFFFFFFF"));
    const auto threads = stage.recorder.threads();
    const std::set crowd(threads.begin() + 1, threads.end());
    EXPECT_EQ(crowd.size(), 8U);
    for (const auto& thread : crowd) {
        EXPECT_EQ(std::count(threads.begin() + 1, threads.end(), thread), 500);
    }
}

TEST(Callbacks, ComeWhileReleaseIsUnderWay) {
    Stage stage("during Release deliver \"late.JPG\" 0xFFFFFFFF\nduring Release second warning 7");
    stage.open();
    stage.close();
    EXPECT_EQ(stage.recorder.calls().size(), 4U);
    EXPECT_TRUE(stage.recorder.got("OnCompleteDownload \"late.JPG\" 0xFFFFFFFF"));
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00000007"));
    EXPECT_EQ(stage.journal().back(), "Release true");
}

TEST(CallbacksDeath, MayPourInWhileTheProcessExits) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    for (int time = 0; time < 5; ++time) {
        EXPECT_EXIT(
            {
                stage.open();
                stage.tell("storm 2000 0x0106");
                std::exit(0);
            },
            testing::ExitedWithCode(0), "");
    }
}

TEST(Callbacks, ThatAreQueuedComeBeforeReleaseReturns) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("storm 1000 0x0106"), "");
    stage.close();
    EXPECT_EQ(stage.recorder.calls().size(), 1002U);
}
