// From the shutter to the report of the file.

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <unistd.h>
#if defined(__linux__)
#include <linux/capability.h>
#include <sys/syscall.h>
#endif

#include "tests/simulator/stage.h"

using namespace SCRSDK;
using Names = std::vector<std::string>;

namespace {

const std::string& whole(const std::string& name) {
    static thread_local std::string call;
    return call = "OnCompleteDownload \"" + name + "\" 0xFFFFFFFF";
}

// The files that were reported, and warnings, in order.
Names reported(Stage& stage) {
    Names names;
    for (const std::string& call : stage.recorder.calls()) {
        if (call.rfind("OnCompleteDownload", 0) == 0 || call.rfind("OnWarning", 0) == 0) {
            names.push_back(call);
        }
    }
    return names;
}

std::string state_of(Stage& stage, const std::string& key) {
    for (const std::string& line : stage.state()) {
        if (line.rfind(key + " ", 0) == 0) {
            return line.substr(key.size() + 1);
        }
    }
    return "";
}

}  // namespace

TEST(Shots, AJpegComesToTheComputer) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    EXPECT_TRUE(stage.recorder.got(whole("DSC00001.JPG")));
    EXPECT_EQ(stage.files(), Names{"DSC00001.JPG"});
    EXPECT_GT(std::filesystem::file_size(stage.shots() / "DSC00001.JPG"), 500U);
}

TEST(Shots, MakeTheFilesOfTheFileType) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    EXPECT_EQ(stage.set(0x0106, 2), 0U);
    stage.shoot();
    EXPECT_EQ(stage.set(0x0106, 3), 0U);
    stage.shoot();  // the camera's own choice of the pair
    EXPECT_EQ(stage.set(0x0507, 0), 0U);
    stage.shoot();
    EXPECT_EQ(stage.set(0x0106, 4), 0U);
    stage.shoot();
    EXPECT_EQ(stage.set(0x0507, 3), 0U);
    stage.shoot();
    EXPECT_EQ(stage.set(0x0507, 2), 0U);
    stage.shoot();
    stage.wait();
    EXPECT_EQ(reported(stage),
              (Names{whole("DSC00001.ARW"), whole("DSC00002.JPG"), whole("DSC00003.ARW"),
                     whole("DSC00003.JPG"), whole("DSC00004.HIF"), whole("DSC00005.ARW"),
                     whole("DSC00005.HIF"), whole("DSC00006.ARW")}));
    EXPECT_EQ(stage.files().size(), 8U);
}

TEST(Shots, GoWhereTheDestinationSays) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    EXPECT_EQ(stage.set(0x0119, 2), 0U);
    stage.shoot();
    EXPECT_EQ(stage.set(0x0119, 3), 0U);
    stage.shoot();
    stage.wait();
    EXPECT_EQ(stage.files(), (Names{"DSC00001.JPG", "DSC00003.JPG"}));
    EXPECT_EQ(state_of(stage, "camera"),
              "\"Virtual Camera SIM-1\" over USB, card in, 2 shots on it, 0 kept, next 4");
}

TEST(Shots, StayOnTheCameraWithoutAFolder) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.set(0x011A, 2), 0U);
    EXPECT_EQ(stage.set(0x0119, 1), 0U);
    stage.shoot();
    stage.wait();
    EXPECT_TRUE(reported(stage).empty());
    EXPECT_EQ(state_of(stage, "camera"),
              "\"Virtual Camera SIM-1\" over USB, card in, 0 shots on it, 1 kept, next 2");
    EXPECT_EQ(stage.save_info(stage.shots().string()), 0U);
    stage.shoot();
    stage.wait();
    EXPECT_EQ(stage.files(), Names{"DSC00002.JPG"});
}

TEST(Shots, CanBeTakenAtTheBody) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.tell("shutter"), "");  // no session: to the card
    EXPECT_EQ(stage.connect(), 0U);
    EXPECT_TRUE(stage.recorder.got("OnConnected 3"));
    stage.save_to(stage.shots());
    EXPECT_EQ(stage.tell("shutter"), "");
    EXPECT_EQ(stage.tell("second shutter"), "");
    stage.wait();
    EXPECT_EQ(stage.files(), (Names{"DSC00002.JPG", "DSC00003.JPG"}));
    const auto threads = stage.recorder.threads();
    // Which of the two reports last is chance.
    EXPECT_EQ(std::set(threads.begin(), threads.end()).size(), 2u);
}

TEST(Shots, AreNamedAsTheHostSays) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    EXPECT_EQ(stage.save_info(stage.shots().string(), "SHOOT", 41), 0U);
    stage.shoot();
    stage.shoot();
    stage.wait();
    EXPECT_EQ(stage.files(), (Names{"SHOOT00041.JPG", "SHOOT00042.JPG"}));
}

TEST(Shots, ACameraThatFallsAsleepAtOnceHangsNobody) {
    Stage stage;
    stage.open();
    EXPECT_EQ(stage.tell("sleep after 0.000000001s"), "");
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00020002"));
    for (int time = 0; time < 20; ++time) {
        EXPECT_EQ(stage.tell("wake"), "");
        EXPECT_FALSE(stage.state().empty());
    }
    EXPECT_EQ(stage.tell("sleep after 0s"), "");
    EXPECT_EQ(stage.tell("wake"), "");
    stage.wait();
}

TEST(Shots, TheCounterWrapsAndPassesTheNamesThatAreTaken) {
    Stage stage("counter 1");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    EXPECT_EQ(stage.tell("counter 9999"), "");
    stage.shoot();
    stage.shoot();
    stage.wait();
    EXPECT_EQ(reported(stage),
              (Names{whole("DSC00001.JPG"), whole("DSC09999.JPG"), whole("DSC00002.JPG")}));
    EXPECT_EQ(stage.files(), (Names{"DSC00001.JPG", "DSC00002.JPG", "DSC09999.JPG"}));
    EXPECT_EQ(stage.tell("counter 10000"), "the counter goes from 1 to 9999");
}

TEST(Shots, NeedFocus) {
    Stage stage("no focus");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();  // accepted, no picture
    EXPECT_EQ(stage.tell("shutter"), "");
    EXPECT_EQ(stage.tell("focus 0s"), "");
    stage.shoot();
    stage.wait();
    EXPECT_EQ(reported(stage), Names{whole("DSC00001.JPG")});
}

TEST(Shots, AButtonLiftedBeforeFocusTakesNone) {
    Stage stage("focus 30s");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    stage.wait();
    EXPECT_TRUE(stage.files().empty());
}

TEST(Shots, AButtonHeldDownWaitsForFocusAndTakesOne) {
    Stage stage("focus 20ms\nexposure 20ms");
    stage.open();
    stage.save_to(stage.shots());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(SendCommand(stage.handle, 0, 1), 0U);  // without a half-press
    EXPECT_TRUE(stage.recorder.got(whole("DSC00001.JPG")));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
    EXPECT_EQ(SendCommand(stage.handle, 0, 1), 0U);
    EXPECT_EQ(SendCommand(stage.handle, 0, 0), 0U);
    stage.wait();
    EXPECT_EQ(stage.files(), Names{"DSC00001.JPG"});
}

TEST(Shots, TwoPressesOnOneFocusTakeTwo) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    EXPECT_EQ(stage.set(0x0001, 2), 0U);
    for (int press = 0; press < 2; ++press) {
        EXPECT_EQ(SendCommand(stage.handle, 0, 1), 0U);
        EXPECT_EQ(SendCommand(stage.handle, 0, 0), 0U);
    }
    EXPECT_EQ(stage.set(0x0001, 1), 0U);
    stage.wait();
    EXPECT_EQ(stage.files(), (Names{"DSC00001.JPG", "DSC00002.JPG"}));
}

TEST(Shots, AFullOrMissingCardTakesNone) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    EXPECT_EQ(stage.set(0x0119, 3), 0U);
    EXPECT_EQ(stage.tell("card full"), "");
    stage.shoot();
    EXPECT_EQ(stage.tell("card out"), "");
    EXPECT_EQ(stage.tell("shutter"), "");
    EXPECT_EQ(stage.set(0x0119, 1), 0U);
    stage.shoot();
    stage.wait();
    EXPECT_EQ(reported(stage),
              (Names{"OnWarning 0x00025101", "OnWarning 0x00025103", whole("DSC00001.JPG")}));
}

TEST(Shots, AFullBufferTakesNone) {
    Stage stage("buffer 2\nnext file late 30s");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    stage.shoot();
    EXPECT_EQ(state_of(stage, "buffer"), "2 of 2");
    stage.shoot();
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00025102"));
}

TEST(Shots, TakeTheTimeThatTheirBytesNeed) {
    Stage stage("picture 640x480");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    stage.wait();
    const auto bytes = std::filesystem::file_size(stage.shots() / "DSC00001.JPG");
    EXPECT_EQ(stage.tell("usb 1MB/s"), "");
    const auto start = std::chrono::steady_clock::now();
    stage.shoot();
    stage.wait();
    EXPECT_GE(std::chrono::steady_clock::now() - start,
              std::chrono::microseconds(std::min<std::uintmax_t>(
                  bytes, std::filesystem::file_size(stage.shots() / "DSC00002.JPG"))));
}

TEST(Shots, AreNotReportedWhenTheFolderCannotTakeThem) {
    Stage stage;
    stage.open();
    for (const char* folder : {"missing", "scene"}) {  // the scene is a file
        stage.save_to(stage.folder() / folder);
        stage.shoot();
        stage.wait();
    }
    stage.save_to(stage.shots());
    stage.shoot();
    stage.wait();
    EXPECT_EQ(reported(stage),
              (Names{"OnWarning 0x00025104", "OnWarning 0x00025104", whole("DSC00003.JPG")}));
    EXPECT_EQ(state_of(stage, "camera"),
              "\"Virtual Camera SIM-1\" over USB, card in, 0 shots on it, 2 kept, next 4");
}

// Permissions hold for root too in this thread and in those that it starts, for as long as this
// lives.
class WithoutOverride {
  public:
    WithoutOverride() {
#if defined(__linux__)
        syscall(SYS_capget, &header_, before_);
        __user_cap_data_struct without[2] = {before_[0], before_[1]};
        without[0].effective &= ~(1U << CAP_DAC_OVERRIDE);
        syscall(SYS_capset, &header_, without);
        in_force_ = true;
#else
        in_force_ = geteuid() != 0;
#endif
    }
    ~WithoutOverride() {
#if defined(__linux__)
        syscall(SYS_capset, &header_, before_);
#endif
    }
    WithoutOverride(const WithoutOverride&) = delete;
    WithoutOverride& operator=(const WithoutOverride&) = delete;

    bool in_force() const {
        return in_force_;
    }

  private:
#if defined(__linux__)
    __user_cap_header_struct header_{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct before_[2] = {};
#endif
    bool in_force_ = false;
};

TEST(Shots, AreNotReportedWhenTheFolderIsReadOnly) {
    const WithoutOverride plain;
    if (!plain.in_force()) {
        GTEST_SKIP() << "root may write anywhere";
    }
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    std::filesystem::permissions(
        stage.shots(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    stage.shoot();
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00025104"));
    std::filesystem::permissions(stage.shots(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(stage.files().empty());
}

TEST(Shots, AreGivenUpWhenTheSessionEnds) {
    Stage stage("next file late 30s");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    stage.shoot();
    EXPECT_EQ(stage.tell("unplug"), "");
    stage.wait();
    EXPECT_TRUE(stage.files().empty());
    EXPECT_EQ(state_of(stage, "buffer"), "0 of 20");
    EXPECT_EQ(state_of(stage, "camera"),
              "\"Virtual Camera SIM-1\" over USB, card in, 0 shots on it, 2 kept, next 3, "
              "unplugged");
}

TEST(Shots, AreGivenUpByRelease) {
    Stage stage("next file late 30s");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    stage.close();
    EXPECT_TRUE(stage.files().empty());
}
