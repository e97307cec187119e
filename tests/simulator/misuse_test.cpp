// What no application may do: each stops the process with a sentence.

#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;

namespace {

class Misuse : public testing::Test {
  protected:
    Misuse() {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }

    CrDeviceProperty* lend() {
        CrDeviceProperty* properties = nullptr;
        CrInt32 count = 0;
        GetSelectDeviceProperties(stage.handle, 1, &code, &properties, &count);
        return properties;
    }

    Stage stage;
    CrInt32u code = 0x0106;
    char text[1] = {0};
};

}  // namespace

TEST_F(Misuse, CallBeforeInit) {
    EXPECT_DEATH(GetSDKVersion(),
                 "camera-sim: GetSDKVersion was called before Init \\(not started\\)");
}

TEST_F(Misuse, CallAfterRelease) {
    EXPECT_DEATH(
        {
            stage.init();
            Release();
            GetSDKVersion();
        },
        "camera-sim: GetSDKVersion was called after Release \\(released\\)");
}

TEST_F(Misuse, InitTwice) {
    EXPECT_DEATH(
        {
            stage.init();
            Init(0);
        },
        "camera-sim: Init was called twice \\(the session is idle, \"Virtual Camera SIM-1\" over "
        "USB, card in\\)");
}

TEST_F(Misuse, ReleaseTwice) {
    EXPECT_DEATH(
        {
            stage.init();
            Release();
            Release();
        },
        "camera-sim: Release was called after Release");
}

TEST_F(Misuse, CallFromASecondThread) {
    EXPECT_DEATH(
        {
            stage.open();
            std::thread([this] { stage.set(0x0106, 1); }).join();
        },
        "camera-sim: SetDeviceProperty was called from another thread than Init \\(the session is "
        "open, handle 1");
}

TEST_F(Misuse, CallFromInsideACallback) {
    EXPECT_DEATH(
        {
            stage.open();
            stage.recorder.meanwhile = [this] {
                stage.set(0x0106, 1);
            };
            stage.tell("warning 1");
            stage.wait();
        },
        "camera-sim: SetDeviceProperty was called from inside a callback");
}

TEST_F(Misuse, ListAskedFromASecondThread) {
    EXPECT_DEATH(
        {
            stage.init();
            ICrEnumCameraObjectInfo* cameras = stage.find();
            std::thread([cameras] { cameras->GetCount(); }).join();
        },
        "camera-sim: GetCount was called from another thread than Init");
}

TEST_F(Misuse, ListNeverHandedBack) {
    EXPECT_DEATH(
        {
            stage.init();
            stage.find();
            Release();
        },
        "camera-sim: Release was called while 1 list\\(s\\) of cameras had not been handed back");
}

TEST_F(Misuse, ListHandedBackTwice) {
    EXPECT_DEATH(
        {
            stage.init();
            ICrEnumCameraObjectInfo* cameras = stage.find();
            cameras->Release();
            cameras->Release();
        },
        "camera-sim: Release was asked of a list of cameras that was handed back already");
}

TEST_F(Misuse, ListUsedAfterItWasHandedBack) {
    EXPECT_DEATH(
        {
            stage.init();
            ICrEnumCameraObjectInfo* cameras = stage.find();
            cameras->Release();
            cameras->GetCount();
        },
        "camera-sim: GetCount was asked of a list of cameras that was handed back already");
}

TEST_F(Misuse, IndexBeyondTheList) {
    EXPECT_DEATH(
        {
            stage.init();
            stage.find()->GetCameraObjectInfo(1);
        },
        "camera-sim: GetCameraObjectInfo was asked for index 1 of 1 cameras");
}

TEST_F(Misuse, CameraOfAListThatWasHandedBack) {
    EXPECT_DEATH(
        {
            stage.init();
            ICrEnumCameraObjectInfo* cameras = stage.find();
            ICrCameraObjectInfo* camera = cameras->GetCameraObjectInfo(0);
            cameras->Release();
            Connect(camera, &stage.recorder, &stage.handle);
        },
        "camera-sim: Connect was given a camera whose list was handed back already");
}

TEST_F(Misuse, NoPlaceForTheList) {
    EXPECT_DEATH(
        {
            stage.init();
            EnumCameraObjects(nullptr, 3);
        },
        "camera-sim: EnumCameraObjects was given no place for the list");
}

TEST_F(Misuse, NoCallback) {
    EXPECT_DEATH(
        {
            stage.init();
            Connect(stage.find()->GetCameraObjectInfo(0), nullptr, &stage.handle);
        },
        "camera-sim: Connect was given no callback object");
}

TEST_F(Misuse, NoPlaceForTheHandle) {
    EXPECT_DEATH(
        {
            stage.init();
            Connect(stage.find()->GetCameraObjectInfo(0), &stage.recorder, nullptr);
        },
        "camera-sim: Connect was given no place for the handle");
}

TEST_F(Misuse, ArrayNeverHandedBackBeforeTheHandle) {
    EXPECT_DEATH(
        {
            stage.open();
            lend();
            ReleaseDevice(stage.handle);
        },
        "camera-sim: ReleaseDevice was called while 1 array\\(s\\) of properties had not been "
        "handed back");
}

TEST_F(Misuse, ArrayNeverHandedBackBeforeRelease) {
    EXPECT_DEATH(
        {
            stage.open();
            lend();
            Release();
        },
        "camera-sim: Release was called while 1 array\\(s\\) of properties had not been handed "
        "back");
}

TEST_F(Misuse, ArrayHandedBackTwice) {
    EXPECT_DEATH(
        {
            stage.open();
            CrDeviceProperty* properties = lend();
            ReleaseDeviceProperties(stage.handle, properties);
            ReleaseDeviceProperties(stage.handle, properties);
        },
        "camera-sim: ReleaseDeviceProperties was given an array that is not lent: it was handed "
        "back before, or never lent");
}

TEST_F(Misuse, NoArrayHandedBack) {
    EXPECT_DEATH(
        {
            stage.open();
            ReleaseDeviceProperties(stage.handle, nullptr);
        },
        "camera-sim: ReleaseDeviceProperties was given an array that is not lent");
}

TEST_F(Misuse, ArrayHandedBackToAnotherHandle) {
    EXPECT_DEATH(
        {
            stage.open();
            ReleaseDeviceProperties(2, lend());
        },
        "camera-sim: ReleaseDeviceProperties was given handle 2 for an array that handle 1 lent");
}

TEST_F(Misuse, HandleNeverGivenBack) {
    EXPECT_DEATH(
        {
            stage.open();
            Release();
        },
        "camera-sim: Release was called while handle 1 had not been given back");
}

TEST_F(Misuse, NoCodes) {
    CrDeviceProperty* properties = nullptr;
    CrInt32 count = 0;
    EXPECT_DEATH(
        {
            stage.open();
            GetSelectDeviceProperties(stage.handle, 0, &code, &properties, &count);
        },
        "camera-sim: GetSelectDeviceProperties was given no codes");
    EXPECT_DEATH(
        {
            stage.open();
            GetSelectDeviceProperties(stage.handle, 1, nullptr, &properties, &count);
        },
        "camera-sim: GetSelectDeviceProperties was given no codes");
}

TEST_F(Misuse, NoPlaceForTheProperties) {
    CrDeviceProperty* properties = nullptr;
    EXPECT_DEATH(
        {
            stage.open();
            GetSelectDeviceProperties(stage.handle, 1, &code, &properties, nullptr);
        },
        "camera-sim: GetSelectDeviceProperties was given no place for the properties");
}

TEST_F(Misuse, NoProperty) {
    EXPECT_DEATH(
        {
            stage.open();
            SetDeviceProperty(stage.handle, nullptr);
        },
        "camera-sim: SetDeviceProperty was given no property");
}

TEST_F(Misuse, NullTexts) {
    EXPECT_DEATH(
        {
            stage.open();
            SetSaveInfo(stage.handle, nullptr, text, -1);
        },
        "camera-sim: SetSaveInfo was given no path");
    EXPECT_DEATH(
        {
            stage.open();
            SetSaveInfo(stage.handle, text, nullptr, -1);
        },
        "camera-sim: SetSaveInfo was given no prefix");
}

TEST_F(Misuse, LineForReleaseThatTheCameraCannotDoThen) {
    EXPECT_DEATH(
        {
            stage.open();
            EXPECT_EQ(stage.tell("during Release plug"), "");
            stage.close();
        },
        "camera-sim: during Release plug: the camera is plugged in already");
}
