// What EnumCameraObjects finds.

#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;

TEST(Enumeration, FindsTheVirtualCameraWithoutAScene) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    ASSERT_EQ(cameras->GetCount(), 1U);
    EXPECT_STREQ(cameras->GetCameraObjectInfo(0)->GetModel(), "Virtual Camera SIM-1");
    EXPECT_STREQ(cameras->GetCameraObjectInfo(0)->GetConnectionTypeName(), "USB");
    cameras->Release();
}

TEST(Enumeration, FindsTheCamerasOfTheSceneInOrder) {
    Stage stage(
        "camera \"MODEL-A\" over Wi-Fi, card out\n"
        "camera missing\n"
        "camera null over null\n"
        "camera \"MODEL \\\"B\\\"\" over \"USB\", serial 42 # the second");
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    ASSERT_EQ(cameras->GetCount(), 4U);
    EXPECT_STREQ(cameras->GetCameraObjectInfo(0)->GetModel(), "MODEL-A");
    EXPECT_STREQ(cameras->GetCameraObjectInfo(0)->GetConnectionTypeName(), "Wi-Fi");
    EXPECT_EQ(cameras->GetCameraObjectInfo(1), nullptr);
    EXPECT_EQ(cameras->GetCameraObjectInfo(2)->GetModel(), nullptr);
    EXPECT_EQ(cameras->GetCameraObjectInfo(2)->GetConnectionTypeName(), nullptr);
    EXPECT_STREQ(cameras->GetCameraObjectInfo(3)->GetModel(), "MODEL \"B\"");
    EXPECT_EQ(Connect(cameras->GetCameraObjectInfo(1), &stage.recorder, &stage.handle), 0x5108U);
    cameras->Release();
    EXPECT_EQ(stage.handle, 0);
}

TEST(Enumeration, LeavesThePlaceAloneWithoutACamera) {
    Stage stage("no camera");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.find(), nullptr);
    EXPECT_EQ(stage.journal().back(), "EnumCameraObjects 3 0x00000000 null");
}

TEST(Enumeration, DoesNotFindACameraThatIsUnpluggedOrAsleep) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.tell("unplug"), "");
    EXPECT_EQ(stage.find(), nullptr);
    EXPECT_EQ(stage.tell("plug"), "");
    EXPECT_EQ(stage.tell("sleep"), "");
    EXPECT_EQ(stage.find(), nullptr);
    EXPECT_EQ(stage.tell("wake"), "");
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    cameras->Release();
}

TEST(Enumeration, GivesNoListWhenTheSceneSaysSo) {
    Stage stage("next EnumCameraObjects gives null");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.find(), nullptr);
}

TEST(Enumeration, GivesAnEmptyListWhenTheSceneSaysSo) {
    Stage stage("next EnumCameraObjects gives nothing");
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    EXPECT_EQ(cameras->GetCount(), 0U);
    cameras->Release();
}

TEST(Enumeration, MayCountCamerasThatAreNotThere) {
    Stage stage("next EnumCameraObjects gives 3");
    ASSERT_TRUE(stage.init());
    ICrEnumCameraObjectInfo* cameras = stage.find();
    ASSERT_NE(cameras, nullptr);
    EXPECT_EQ(cameras->GetCount(), 3U);
    EXPECT_NE(cameras->GetCameraObjectInfo(0), nullptr);
    EXPECT_EQ(cameras->GetCameraObjectInfo(2), nullptr);
    cameras->Release();
}

TEST(Enumeration, FailsWithoutAndWithAList) {
    Stage stage(
        "next 2 EnumCameraObjects answers 0x8703\n"
        "next EnumCameraObjects answers 0x8703 with list");
    ASSERT_TRUE(stage.init());
    for (int time = 0; time < 2; ++time) {
        ICrEnumCameraObjectInfo* cameras = nullptr;
        EXPECT_EQ(EnumCameraObjects(&cameras, 3), 0x8703U);
        EXPECT_EQ(cameras, nullptr);
    }
    ICrEnumCameraObjectInfo* cameras = nullptr;
    EXPECT_EQ(EnumCameraObjects(&cameras, 3), 0x8703U);
    ASSERT_NE(cameras, nullptr);
    cameras->Release();
}
