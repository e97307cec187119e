// Faults by name. What odd lists of cameras look like is in enumeration_test.

#include <chrono>
#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;

namespace {

std::chrono::nanoseconds took(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::steady_clock::now() - start;
}

}  // namespace

TEST(Faults, RefuseTheNextWritesOfACode) {
    Stage stage("next 2 SetDeviceProperty 0x0106 answers 0x8402");
    stage.open();
    EXPECT_EQ(stage.set(0x0507, 0), 0U);
    EXPECT_EQ(stage.set(0x0106, 2), 0x8402U);
    EXPECT_EQ(stage.set(0x0106, 2), 0x8402U);
    EXPECT_EQ(stage.get(0x0106), 1U);
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
}

TEST(Faults, QueueUpInOrderBeforeStandingOnes) {
    Stage stage(
        "every SetDeviceProperty answers 0x1\n"
        "next SetDeviceProperty answers 0x2\n"
        "next SetDeviceProperty 0x0106 answers 0x3");
    stage.open();
    EXPECT_EQ(stage.set(0x0106, 2), 2U);
    EXPECT_EQ(stage.set(0x0507, 0), 1U);
    EXPECT_EQ(stage.set(0x0106, 2), 3U);
    EXPECT_EQ(stage.set(0x0106, 2), 1U);
    EXPECT_EQ(stage.tell("clear faults"), "");
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
}

TEST(Faults, CanPretendSuccess) {
    Stage stage("next SetDeviceProperty answers 0");
    stage.open();
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
    EXPECT_EQ(stage.get(0x0106), 1U);
}

TEST(Faults, RefuseCommandsByNumberAndFolders) {
    Stage stage("next SendCommand 0 answers 5\nnext SetSaveInfo answers 6");
    stage.open();
    EXPECT_EQ(SendCommand(stage.handle, 0, 1), 5U);
    EXPECT_EQ(stage.save_info("/tmp"), 6U);
}

TEST(Faults, SpoilPropertyReads) {
    Stage stage(
        "next GetSelectDeviceProperties 0x0106 gives null\n"
        "next GetSelectDeviceProperties 0x0106 gives nothing\n"
        "next GetSelectDeviceProperties 0x0106 gives unreadable\n"
        "next GetSelectDeviceProperties 0x0106 gives 0xFFFFFFFFFFFFFFFF\n"
        "next GetSelectDeviceProperties 0x0106 answers 0x8000 with array\n"
        "next GetSelectDeviceProperties 0x0106 answers 0x8000");
    stage.open();
    CrInt32u code = 0x0106;
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    const auto read = [&] {
        properties = nullptr;
        count = 0;
        return GetSelectDeviceProperties(stage.handle, 1, &code, &properties, &count);
    };
    EXPECT_EQ(read(), 0U);
    EXPECT_EQ(properties, nullptr);
    EXPECT_EQ(count, 1);

    EXPECT_EQ(read(), 0U);
    EXPECT_NE(properties, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(ReleaseDeviceProperties(stage.handle, properties), 0U);

    EXPECT_EQ(read(), 0U);
    ASSERT_EQ(count, 1);
    EXPECT_FALSE(properties[0].IsGetEnableCurrentValue());
    EXPECT_EQ(ReleaseDeviceProperties(stage.handle, properties), 0U);

    EXPECT_EQ(read(), 0U);
    EXPECT_EQ(properties[0].GetCurrentValue(), 0xFFFFFFFFFFFFFFFFULL);
    EXPECT_EQ(ReleaseDeviceProperties(stage.handle, properties), 0U);

    EXPECT_EQ(read(), 0x8000U);
    EXPECT_NE(properties, nullptr);
    EXPECT_EQ(ReleaseDeviceProperties(stage.handle, properties), 0U);

    EXPECT_EQ(read(), 0x8000U);
    EXPECT_EQ(properties, nullptr);
    EXPECT_EQ(stage.get(0x0106), 1U);
}

TEST(Faults, MakeTheSdkRefuseToStartAndToEnd) {
    Stage stage("next Init answers false");
    EXPECT_FALSE(stage.init());
    EXPECT_EQ(stage.journal(), std::vector<std::string>{"Init 0 false"});

    Stage ending;
    ASSERT_TRUE(ending.init());
    EXPECT_EQ(ending.tell("next Release answers false"), "");
    EXPECT_FALSE(Release());
    EXPECT_EQ(ending.journal().back(), "Release false");
    ASSERT_TRUE(ending.init());  // for the stage to release
}

TEST(Faults, GivingBackWorksWhateverTheAnswer) {
    Stage stage(
        "next Disconnect answers 1\nnext ReleaseDevice answers 2\n"
        "next ReleaseDeviceProperties answers 3");
    stage.open();
    CrInt32u code = 0x0106;
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    EXPECT_EQ(GetSelectDeviceProperties(stage.handle, 1, &code, &properties, &count), 0U);
    EXPECT_EQ(ReleaseDeviceProperties(stage.handle, properties), 3U);
    EXPECT_EQ(Disconnect(stage.handle), 1U);
    EXPECT_EQ(ReleaseDevice(stage.handle), 2U);
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_EQ(stage.handle, 2);
}

TEST(Faults, GiveAnotherVersionOnce) {
    Stage stage("next GetSDKVersion answers 0x02000000");
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(GetSDKVersion(), 0x02000000U);
    EXPECT_EQ(GetSDKVersion(), 0x01000000U);
}

TEST(Faults, AnswerLate) {
    Stage stage("every SetDeviceProperty late 30ms answers 0x8402");
    stage.open();
    EXPECT_GE(took([&] { EXPECT_EQ(stage.set(0x0106, 2), 0x8402U); }),
              std::chrono::milliseconds(30));
}

// The call is stuck until `resume`; meanwhile callbacks and control lines go on, and the journal
// has its line.
class Hangs : public testing::TestWithParam<const char*> {};

TEST_P(Hangs, UntilResume) {
    const std::string function = GetParam();
    Stage stage("next " + function + " hangs");
    std::thread director([&stage, &function] {
        // The control socket of this test is there once Init has begun to hang or has returned.
        std::optional<camera_sim::ControlClient> camera;
        const auto hung = [&stage, &function] {
            for (const auto& fields : stage.journal_fields()) {
                if (fields.size() == 5 && fields[3].rfind(function, 0) == 0 && fields[1] == "-" &&
                    fields[4] == "hangs") {
                    return true;
                }
            }
            return false;
        };
        while (!hung()) {
            std::this_thread::yield();
        }
        camera = camera_sim::ControlClient::connect((stage.folder() / "control").string());
        ASSERT_TRUE(camera);
        ASSERT_TRUE(camera->ask("state")->ok);
        if (function != "Init" && function != "GetSDKVersion" && function != "EnumCameraObjects" &&
            function != "Connect" && function != "ReleaseEnumeration" && function != "Release") {
            ASSERT_TRUE(camera->ask("warning 77")->ok);
            ASSERT_TRUE(stage.recorder.got("OnWarning 0x0000004D"));
        }
        ASSERT_TRUE(camera->ask("resume")->ok);
    });
    stage.open();
    GetSDKVersion();
    EXPECT_EQ(stage.get(0x0106), 1U);
    stage.shoot();
    EXPECT_EQ(stage.save_info("/tmp"), 0U);
    stage.close();
    director.join();
}

INSTANTIATE_TEST_SUITE_P(Faults, Hangs,
                         testing::Values("Init", "Release", "GetSDKVersion", "EnumCameraObjects",
                                         "ReleaseEnumeration", "Connect", "Disconnect",
                                         "ReleaseDevice", "GetSelectDeviceProperties",
                                         "ReleaseDeviceProperties", "SetDeviceProperty",
                                         "SendCommand", "SetSaveInfo"),
                         [](const auto& hang) { return std::string(hang.param); });
