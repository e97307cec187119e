// What the camera lets the host read and write.

#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;
using Calls = std::vector<std::string>;

TEST(Properties, StartAsACameraLeavesTheShelf) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.get(0x0001), 1U);
    EXPECT_EQ(stage.get(0x0106), 1U);
    EXPECT_EQ(stage.get(0x0119), 2U);
    EXPECT_EQ(stage.get(0x011A), 1U);
    EXPECT_EQ(stage.get(0x0507), 1U);
    EXPECT_EQ(stage.get(0x0708), 2U);
    EXPECT_EQ(stage.get(0x070D), 1U);
}

TEST(Properties, ComeInTheOrderAsked) {
    Stage stage;
    stage.open();
    CrInt32u codes[] = {0x0708, 0x0106};
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    ASSERT_EQ(GetSelectDeviceProperties(stage.handle, 2, codes, &properties, &count), 0U);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(properties[0].GetCode(), 0x0708U);
    EXPECT_EQ(properties[1].GetCode(), 0x0106U);
    EXPECT_EQ(properties[1].GetCurrentValue(), 1U);
    EXPECT_EQ(ReleaseDeviceProperties(stage.handle, properties), 0U);
    EXPECT_EQ(stage.journal().back(), "ReleaseDeviceProperties 2 0x00000000");
}

TEST(Properties, ThatTheCameraDoesNotHaveAreRefused) {
    Stage stage;
    stage.open();
    CrInt32u code = 0x0BAD;
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    EXPECT_EQ(GetSelectDeviceProperties(stage.handle, 1, &code, &properties, &count), 0x5105U);
    EXPECT_EQ(properties, nullptr);
    EXPECT_EQ(stage.set(0x0BAD, 1), 0x5105U);
    EXPECT_EQ(stage.tell("set 0x0BAD 7"), "");
    EXPECT_EQ(stage.get(0x0BAD), 7U);
}

TEST(Properties, TakeOnlyValuesThatTheyHave) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.set(0x0106, 5), 0x5106U);
    EXPECT_EQ(stage.set(0x0106, 0), 0x5106U);
    EXPECT_EQ(stage.set(0x0708, 1), 0x5106U);
    EXPECT_EQ(stage.set(0x0106, 4), 0U);
    stage.wait();
    CrDeviceProperty untyped;
    untyped.SetCode(0x0106);
    untyped.SetCurrentValue(1);
    EXPECT_EQ(SetDeviceProperty(stage.handle, &untyped), 0x5106U);
    EXPECT_EQ(stage.journal().back(), "SetDeviceProperty 0x0106 1 type 0 0x00005106");
    EXPECT_EQ(stage.get(0x0106), 4U);
}

TEST(Properties, TheDestinationNeedsPcRemotePriority) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.set(0x0119, 1), 0x5107U);
    EXPECT_EQ(stage.get(0x0119), 2U);
    EXPECT_EQ(stage.set(0x011A, 2), 0U);
    EXPECT_EQ(stage.set(0x0119, 1), 0U);
    EXPECT_EQ(stage.set(0x0119, 4), 0x5106U);
    EXPECT_EQ(stage.get(0x0119), 1U);
}

TEST(Properties, ChangesAreReportedWhoeverMadeThem) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
    EXPECT_EQ(stage.set(0x0106, 2), 0U);  // no change, no notice
    EXPECT_EQ(stage.tell("dial both"), "");
    EXPECT_EQ(stage.tell("card out"), "");
    EXPECT_EQ(stage.tell("card out"), "");
    EXPECT_EQ(stage.tell("set 0x0106 1"), "");  // silent
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (Calls{"OnConnected 3", "OnPropertyChangedCodes 0x0106",
                     "OnPropertyChangedCodes 0x0106", "OnPropertyChangedCodes 0x0708"}));
    EXPECT_EQ(stage.get(0x0106), 1U);
}

TEST(Properties, TheDialHasEveryFileType) {
    Stage stage;
    stage.open();
    const std::pair<const char*, CrInt64u> positions[] = {
        {"raw", 2}, {"both", 3}, {"heif", 4}, {"jpeg", 1}, {"0x10", 16}};
    for (const auto& [position, value] : positions) {
        EXPECT_EQ(stage.tell(std::string("dial ") + position), "");
        EXPECT_EQ(stage.get(0x0106), value);
    }
}

TEST(Properties, TheCardShowsInBothSlots) {
    Stage stage("camera A over USB, card out");
    stage.open();
    EXPECT_EQ(stage.get(0x0708), 1U);
    EXPECT_EQ(stage.get(0x070D), 1U);
    EXPECT_EQ(stage.tell("card full"), "");
    EXPECT_EQ(stage.get(0x0708), 3U);
    EXPECT_EQ(stage.tell("card in"), "");
    EXPECT_EQ(stage.get(0x0708), 2U);
    EXPECT_EQ(stage.get(0x070D), 1U);
}

TEST(Properties, CanBeMadeUnreadable) {
    Stage stage("unreadable 0x0708");
    stage.open();
    EXPECT_EQ(stage.get(0x0708), std::nullopt);
    EXPECT_EQ(stage.journal()[stage.journal().size() - 2],
              "GetSelectDeviceProperties 0x0708 0x00000000 unreadable");
    EXPECT_EQ(stage.tell("readable 0x0708"), "");
    EXPECT_EQ(stage.get(0x0708), 2U);
}

TEST(Properties, AreBusyForAWhile) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("busy 30s"), "");
    EXPECT_EQ(stage.set(0x0106, 2), 0x8402U);
    EXPECT_EQ(stage.set(0x0001, 2), 0x8402U);
    EXPECT_EQ(stage.get(0x0106), 1U);
    EXPECT_EQ(stage.tell("busy 0s"), "");
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
    EXPECT_EQ(stage.tell("busy 20ms"), "");
    CrInt32u result = 0x8402;
    while (result == 0x8402) {
        result = stage.set(0x0106, 1);
    }
    EXPECT_EQ(result, 0U);
}

TEST(Properties, OddHandlesGetAnErrorCode) {
    Stage stage;
    stage.open();
    CrDeviceProperty property;
    EXPECT_EQ(SetDeviceProperty(0, &property), 0x5101U);
    EXPECT_EQ(SetDeviceProperty(77, &property), 0x5101U);
    EXPECT_EQ(SendCommand(0, 0, 1), 0x5101U);
    EXPECT_EQ(ReleaseDevice(0), 0x5101U);
    EXPECT_EQ(Disconnect(0), 0x5101U);
    char none[] = "";
    EXPECT_EQ(SetSaveInfo(0, none, none, -1), 0x5101U);
    EXPECT_EQ(stage.journal().back(), "SetSaveInfo \"\" \"\" -1 on handle 0 0x00005101");
    CrInt32u code = 0x0106;
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    EXPECT_EQ(GetSelectDeviceProperties(0, 1, &code, &properties, &count), 0x5101U);
    EXPECT_EQ(properties, nullptr);
}

TEST(Properties, CommandsThatTheCameraDoesNotHaveAreRefused) {
    Stage stage;
    stage.open();
    EXPECT_EQ(SendCommand(stage.handle, 1, 1), 0x5109U);
    EXPECT_EQ(SendCommand(stage.handle, 0, 2), 0x5109U);
}
