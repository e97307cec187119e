// The life of a session, as the scene makes it go.

#include <chrono>
#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;
using Calls = std::vector<std::string>;

TEST(Connection, ComesUpAndEnds) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.handle, 1);
    EXPECT_EQ(Disconnect(stage.handle), 0U);
    EXPECT_EQ(ReleaseDevice(stage.handle), 0U);
    stage.handle = 0;
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(), (Calls{"OnConnected 3", "OnDisconnected 0x00000000"}));
    EXPECT_NE(stage.recorder.threads()[0], std::this_thread::get_id());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.handle, 2);
}

TEST(Connection, GivesTheVersionsOfTheScene) {
    Stage stage("version 0x01020304\nconnection version -1");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(GetSDKVersion(), 0x01020304U);
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected -1"));
}

TEST(Connection, TakesTheTimeThatTheSceneGives) {
    Stage stage("looking 30ms\nopening 30ms");
    const auto start = std::chrono::steady_clock::now();
    stage.open();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

TEST(Connection, IsHeldUntilTheSceneAnswers) {
    Stage stage("answer held");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.tell("answer now"), "no answer is held");
    EXPECT_EQ(stage.connect(), 0U);
    stage.wait();
    EXPECT_EQ(stage.set(0x0106, 2), 0x5103U);
    EXPECT_EQ(Disconnect(stage.handle), 0x5103U);
    EXPECT_TRUE(stage.recorder.calls().empty());
    EXPECT_EQ(stage.tell("answer now"), "");
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
}

TEST(Connection, IsAnsweredLate) {
    Stage stage("answer late 50ms");
    ASSERT_TRUE(stage.init());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(Connection, IsAnsweredBeforeConnectReturns) {
    Stage stage("answer before return");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.recorder.calls(), Calls{"OnConnected 3"});
    EXPECT_NE(stage.recorder.threads()[0], std::this_thread::get_id());
}

TEST(Connection, IsNeverAnsweredAndTheHandleCanBeGivenBack) {
    Stage stage("answer never");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.tell("answer now"), "no answer is held");
    EXPECT_EQ(ReleaseDevice(stage.handle), 0U);
    EXPECT_EQ(stage.set(0x0106, 2), 0x5101U);
    stage.handle = 0;
    stage.wait();
    EXPECT_TRUE(stage.recorder.calls().empty());
}

TEST(Connection, ALateAnswerDoesNotComeToAHandleThatWasGivenBack) {
    Stage stage("answer late 30ms");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(ReleaseDevice(stage.handle), 0U);
    EXPECT_EQ(stage.tell("answer late 60ms"), "");
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
    EXPECT_EQ(stage.recorder.calls().size(), 1U);
}

TEST(Connection, IsAnsweredByAnError) {
    Stage stage("answer error 0x00008703");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnError 0x00008703"));
    EXPECT_EQ(stage.set(0x0106, 2), 0x5102U);
    EXPECT_EQ(ReleaseDevice(stage.handle), 0U);
    EXPECT_EQ(stage.tell("answer normal"), "");
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
}

TEST(Connection, IsAnsweredByALoss) {
    Stage stage("answer disconnected 10");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnDisconnected 0x0000000A"));
}

TEST(Connection, IsRefusedWhenTheSceneSaysSo) {
    Stage stage("next Connect answers 0x8200");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0x8200U);
    EXPECT_EQ(stage.handle, 0);
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.handle, 1);
}

TEST(Connection, IsRefusedWhileAHandleIsOut) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.connect(), 0x5104U);
    EXPECT_EQ(stage.handle, 1);
}

TEST(Connection, IsRefusedByACameraThatWasUnpluggedSinceItWasFound) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    EXPECT_EQ(stage.tell("unplug"), "");
    EXPECT_EQ(Connect(cameras->GetCameraObjectInfo(0), &stage.recorder, &stage.handle), 0x5108U);
    cameras->Release();
}

TEST(Connection, IsRefusedByACameraThatTheSceneTookAway) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    EXPECT_EQ(stage.tell("no camera"), "");
    EXPECT_EQ(stage.tell("dial raw"), "there is no camera");
    EXPECT_EQ(Connect(cameras->GetCameraObjectInfo(0), &stage.recorder, &stage.handle), 0x5108U);
    cameras->Release();
}

TEST(Connection, IsLostForGoodWhenTheCableIsPulled) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("unplug"), "");
    EXPECT_EQ(stage.tell("unplug"), "the camera is unplugged already");
    EXPECT_TRUE(stage.recorder.got("OnDisconnected 0x00005111"));
    EXPECT_EQ(stage.set(0x0106, 2), 0x5102U);
    EXPECT_EQ(stage.get(0x0106), std::nullopt);
    EXPECT_EQ(SendCommand(stage.handle, 0, 1), 0x5102U);
    EXPECT_EQ(stage.save_info("/"), 0x5102U);
    EXPECT_EQ(Disconnect(stage.handle), 0x5102U);
    EXPECT_EQ(stage.tell("plug"), "");
    EXPECT_EQ(stage.tell("plug"), "the camera is plugged in already");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(), (Calls{"OnConnected 3", "OnDisconnected 0x00005111"}));
    EXPECT_EQ(ReleaseDevice(stage.handle), 0U);
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.handle, 2);
}

TEST(Connection, ComesBackWithTheSameHandleWhenTheSdkReconnects) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.set(0x011A, 2), 0U);
    EXPECT_EQ(stage.tell("unplug reconnecting"), "");
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00020002"));
    EXPECT_EQ(stage.set(0x0106, 2), 0x5102U);
    EXPECT_EQ(stage.tell("plug"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(), (Calls{"OnConnected 3", "OnPropertyChangedCodes 0x011A",
                                             "OnWarning 0x00020002", "OnConnected 3"}));
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
    EXPECT_EQ(stage.get(0x011A), 1U);  // priority is to be taken anew
}

TEST(Connection, IsLostForGoodWhenTheSdkGivesUpReconnecting) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("unplug reconnecting"), "");
    EXPECT_EQ(stage.tell("unplug"), "");
    EXPECT_EQ(stage.tell("plug"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (Calls{"OnConnected 3", "OnWarning 0x00020002", "OnDisconnected 0x00005111"}));
}

TEST(Connection, IsLostWhileItOpens) {
    Stage stage("answer held");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.tell("unplug"), "");
    EXPECT_TRUE(stage.recorder.got("OnDisconnected 0x00005111"));
    EXPECT_EQ(stage.tell("answer now"), "no answer is held");
}

TEST(Connection, Flaps) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.tell("flap 2"), "no session is open");
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
    EXPECT_EQ(stage.tell("flap 2"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (Calls{"OnConnected 3", "OnWarning 0x00020002", "OnConnected 3",
                     "OnWarning 0x00020002", "OnConnected 3"}));
}

TEST(Connection, SleepsAndWakes) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("sleep"), "");
    EXPECT_EQ(stage.tell("shutter"), "the camera is asleep");
    EXPECT_EQ(stage.tell("wake"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (Calls{"OnConnected 3", "OnWarning 0x00020002", "OnConnected 3"}));
}

TEST(Connection, SleepsWhenNobodyAsksForAnything) {
    Stage stage;
    stage.open();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(stage.tell("sleep after 40ms"), "");
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00020002"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
    EXPECT_EQ(stage.tell("sleep after 0s"), "");
    EXPECT_EQ(stage.tell("wake"), "");
}
