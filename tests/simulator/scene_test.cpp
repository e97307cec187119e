// The scene language: what is wrong with a line is said in a sentence. Each verb's work is tested
// with its subject.

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;

namespace {

void tell_every_verb_for_release() {
    Stage stage;
    stage.open();
    const auto before = stage.state();
    for (const char* line : {"camera A over USB",
                             "no camera",
                             "no focus",
                             "answer now",
                             "answer held",
                             "timing real",
                             "looking 1s",
                             "focus 1s",
                             "usb 1MB/s",
                             "buffer 1",
                             "picture 9x9",
                             "seed 9",
                             "version 9",
                             "connection version 9",
                             "card out",
                             "dial raw",
                             "shutter",
                             "counter 9",
                             "unplug",
                             "unplug reconnecting",
                             "plug",
                             "flap 2",
                             "sleep",
                             "sleep after 1s",
                             "wake",
                             "busy 1s",
                             "set 0x0106 2",
                             "unreadable 0x0106",
                             "readable 0x0106",
                             "connected 9",
                             "disconnected 9",
                             "warning 9",
                             "caution",
                             "error 9",
                             "properties 9",
                             "properties none",
                             "properties null 9",
                             "deliver a 9",
                             "storm 9 9",
                             "crowd 9",
                             "second warning 9",
                             "next Connect hangs",
                             "every file missing",
                             "clear faults",
                             "resume"}) {
        EXPECT_EQ(stage.tell(std::string("during Release ") + line), "") << line;
    }
    stage.wait();
    EXPECT_EQ(stage.state(), before);
    EXPECT_EQ(stage.recorder.calls().size(), 1U);
    std::_Exit(testing::Test::HasFailure() ? 1 : 0);
}

}  // namespace

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
        {"crowd", "N is missing"},
        {"crowd 1000001", "N is at most a million"},
        {"flap 1000001", "N is at most a million"},
        {"second", "\"second\" stands before another command"},
        {"second second warning 1", "\"second\" does not stand behind \"second\""},
        {"second during Release warning 1", "\"during\" does not stand behind \"second\""},
        {"during Release during Release warning 1",
         "\"during\" does not stand behind \"during Release\""},
        {"during Release second second warning 1", "\"second\" does not stand behind \"second\""},
        {"during Release warning many", "CODE is a number, not \"many\""},
        {"during Release warning 1 2", "\"2\" is not understood here"},
        {"during Release second deliver a", "NUMBER is missing"},
        {"during Release camera A over USB card wet", "a card is in, out or full"},
        {"during Release next file sings", "\"sings\" is no response of file"},
        {"during Release unplug soon", "\"soon\" is not understood here"},
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
    stage.wait();
    EXPECT_EQ(stage.recorder.calls().size(), 1U);  // OnConnected
    const auto state = stage.state();              // and none of them left a trace
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

// Every verb, in a session: nothing happens before Release. That is left out: it would stop here.
TEST(SceneDeath, ALineForReleaseIsOnlyCheckedNow) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Stage outer;  // removes what the other process leaves
    EXPECT_EXIT(tell_every_verb_for_release(), testing::ExitedWithCode(0), "");
}

TEST(SceneDeath, AFolderIsNoScene) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    setenv("CAMERA_SIM_SCENE", stage.shots().c_str(), 1);
    EXPECT_DEATH(Init(0), "camera-sim: the scene .*/shots is not a file with lines of text");
}

// Init would wait for ever, and the worker with it.
TEST(SceneDeath, APipeIsNoSceneAndNoJournalThatNobodyReads) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    const std::string pipe = stage.shots() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    setenv("CAMERA_SIM_SCENE", pipe.c_str(), 1);
    EXPECT_DEATH(Init(0), "camera-sim: the scene .*/pipe is not a file with lines of text");
    unsetenv("CAMERA_SIM_SCENE");
    setenv("CAMERA_SIM_JOURNAL", pipe.c_str(), 1);
    EXPECT_DEATH(Init(0), "camera-sim: the journal .*/pipe cannot be opened: ");
}

TEST(SceneDeath, AnEndlessLineIsNoScene) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    const std::string scene = stage.shots() / "endless";
    ASSERT_EQ(close(open(scene.c_str(), O_CREAT | O_WRONLY, 0600)), 0);
    ASSERT_EQ(truncate(scene.c_str(), off_t{1} << 40), 0);
    setenv("CAMERA_SIM_SCENE", scene.c_str(), 1);
    EXPECT_DEATH(Init(0), "camera-sim: .*/endless:1: the line is too long");
}

TEST(Environment, AVariableWithASlipInItsNameIsTold) {
    Stage stage;
    setenv("CAMERA_SIM_SCEEN", "scene", 1);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(stage.init());
    unsetenv("CAMERA_SIM_SCEEN");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "camera-sim: simulated SDK, no real camera is driven\n"
              "camera-sim: CAMERA_SIM_SCEEN means nothing to the virtual camera, which knows "
              "CAMERA_SIM_SCENE CAMERA_SIM_CONTROL CAMERA_SIM_JOURNAL CAMERA_SIM_PICTURES\n");
}

TEST(SceneDeath, AMissingSceneStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    setenv("CAMERA_SIM_SCENE", "/nowhere/scene", 1);
    EXPECT_DEATH(Init(0), "camera-sim: the scene /nowhere/scene cannot be read: ");
}
