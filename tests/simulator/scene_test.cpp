// The scene language: what is wrong with a line is said in a sentence. Each verb's work is tested
// with its subject.

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;

TEST(Scene, SaysWhatIsWrongWithALine) {
    Stage stage;
    stage.open();
    const std::pair<const char*, const char*> lines[] = {
        {"camera", "MODEL is missing"},
        {"camera A", "a camera is: MODEL over TYPE, card in|out|full, serial TEXT"},
        {"camera A over USB card", "a card is in, out or full"},
        {"camera A over USB card wet", "a card is in, out or full"},
        {"camera A over USB weight 3", "\"weight\" is not understood here"},
        {"camera A over USB", "cameras cannot be added or removed during a session or a shot"},
        {"no camera", "cameras cannot be added or removed during a session or a shot"},
        {"no", "\"no\" stands before camera or focus"},
        {"no hope", "\"no\" stands before camera or focus"},
        {"version one", "VERSION is a number, not \"one\""},
        {"version 0x123456789", "VERSION has at most 32 bits"},
        {"connection 3", "connection version N"},
        {"timing slow", "timing is instant or real"},
        {"looking 3", "T is a time like 250ms or 1.5s, not \"3\""},
        {"looking s", "T is a time like 250ms or 1.5s, not \"s\""},
        {"looking -1s", "T is a time like 250ms or 1.5s, not \"-1s\""},
        {"looking 1.s", "T is a time like 250ms or 1.5s, not \"1.s\""},
        {"looking 99999999s", "T is a time like 250ms or 1.5s, not \"99999999s\""},
        {"usb 40", "a rate is like 40MB/s"},
        {"usb 0MB/s", "a rate is like 40MB/s"},
        {"buffer 0", "a buffer holds at least 1 shot"},
        {"picture 0x4000", "a picture's size is like 6000x4000, at most 20000x20000"},
        {"picture 6000", "a picture's size is like 6000x4000, at most 20000x20000"},
        {"picture 6000x99999", "a picture's size is like 6000x4000, at most 20000x20000"},
        {"answer",
         "an answer is normal, held, now, late T, before return, never, error CODE or "
         "disconnected CODE"},
        {"answer before", "answer before return"},
        {"answer error", "CODE is missing"},
        {"clear", "clear faults"},
        {"card", "a card is in, out or full"},
        {"dial", "jpeg, raw, both, heif or VALUE is missing"},
        {"dial tiff", "jpeg, raw, both, heif or VALUE is a number, not \"tiff\""},
        {"deliver", "NAME is missing"},
        {"deliver \"a", "a quoted text has no end"},
        {"deliver \"\\q\" 1", "a backslash in quotes stands before \", \\, n, r or xHH"},
        {"deliver \"\\x4\" 1", "a backslash in quotes stands before \", \\, n, r or xHH"},
        {"deliver a", "NUMBER is missing"},
        {"set 1", "VALUE is missing"},
        {"set 1 18446744073709551616", "VALUE is a number, not \"18446744073709551616\""},
        {"storm 5", "CODE is missing"},
        {"storm 1000001 1", "N is at most a million"},
        {"flap 1000001", "N is at most a million"},
        {"second", "\"second\" stands before another command"},
        {"second rate", "\"rate\" is no word of the scene language"},
        {"during Init warning 1", "during Release LINE"},
        {"during Release", "\"\" is no command of the scene language"},
        {"during Release rest", "\"rest\" is no command of the scene language"},
        {"next", "SUBJECT is missing"},
        {"next 0 SetDeviceProperty hangs", "N is at least 1"},
        {"next Fly hangs", "\"Fly\" is no function of the SDK, nor file or pair"},
        {"next SetDeviceProperty", "a response is missing"},
        {"next SetDeviceProperty sings", "\"sings\" is no response of SetDeviceProperty"},
        {"next SetDeviceProperty answers", "RESULT is missing"},
        {"next SetDeviceProperty gives 3", "\"gives\" is no response of SetDeviceProperty"},
        {"next SetDeviceProperty answers 1 with array",
         "\"answers\" is no response of SetDeviceProperty"},
        {"next EnumCameraObjects answers 1 with array",
         "\"answers\" is no response of EnumCameraObjects"},
        {"next EnumCameraObjects gives unreadable", "COUNT is a number, not \"unreadable\""},
        {"next Init answers 1", "\"answers\" is no response of Init"},
        {"next ReleaseEnumeration answers 1", "\"answers\" is no response of ReleaseEnumeration"},
        {"next Connect 0x0106 hangs", "\"0x0106\" is no response of Connect"},
        {"next file hangs", "\"hangs\" is no response of file"},
        {"next pair twice", "\"twice\" is no response of pair"},
        {"\"card\" in", "VERB is wanted, not the text \"card\""},
    };
    for (const auto& [line, sentence] : lines) {
        EXPECT_EQ(stage.tell(line), sentence) << line;
    }
    const auto state = stage.state();  // and none of them left a trace
    EXPECT_NE(std::find(state.begin(), state.end(), "faults 0"), state.end());
}

TEST(Scene, TakesCommasHexAndCommentsAnywhere) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("\tproperties 0x106,0X708 , 7#8"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().back(), "OnPropertyChangedCodes 0x0106 0x0708 0x0007");
    EXPECT_EQ(stage.tell("deliver \"a#b\" 1 # c"), "");
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().back(), "OnCompleteDownload \"a#b\" 0x00000001");
}

TEST(Scene, TimesAreExact) {
    Stage stage("looking 1.5ms");
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    cameras->Release();
    EXPECT_GE(std::stod(stage.journal_fields()[1][1]), 0.0015);
}

TEST(Scene, TimesNamedAfterTimingInstantCount) {
    Stage stage("focus 2s\ntiming instant\nlooking 10ms");
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    cameras->Release();
    EXPECT_GE(std::stod(stage.journal_fields()[1][1]), 0.010);
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
    stage.save_to(stage.shots());
    stage.shoot();  // with a focus of two seconds it would take no picture
    stage.wait();
    EXPECT_EQ(stage.files().size(), 1U);
}

TEST(SceneDeath, ABadLineStopsTheProcessWithItsPlace) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage("# fine\ncard wet");
    EXPECT_DEATH(Init(0), "camera-sim: .*/scene:4: a card is in, out or full");
}

TEST(SceneDeath, AMissingSceneStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    setenv("CAMERA_SIM_SCENE", "/nowhere/scene", 1);
    EXPECT_DEATH(Init(0), "camera-sim: the scene /nowhere/scene cannot be read: ");
}
