// The control socket and the state that it prints.

#include <algorithm>
#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;
using camera_sim::ControlClient;

TEST(Control, AnswersEveryLine) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.tell(""), "");
    EXPECT_EQ(stage.tell("   # nothing but a comment"), "");
    EXPECT_EQ(stage.tell("wait now"), "\"now\" is not understood here");
    EXPECT_EQ(stage.tell("dance"), "\"dance\" is no word of the scene language");
}

TEST(Control, PrintsTheState) {
    Stage stage("camera \"MODEL-A\" over USB, card out\nunreadable 0x0708");
    stage.open();
    EXPECT_EQ(stage.save_info("/tmp/x y"), 0U);
    const auto state = stage.state();
    for (const char* line :
         {"session open", "handle 1",
          "camera \"MODEL-A\" over USB, card out, 0 shots on it, 0 kept, next 1",
          "property 0x0106 1", "property 0x0708 1 unreadable", "folder \"/tmp/x y\"",
          "buffer 0 of 20", "faults 0", "lent 0 lists, 0 arrays"}) {
        EXPECT_EQ(std::count(state.begin(), state.end(), line), 1) << line;
    }
}

TEST(Control, ServesSeveralClientsAtOnce) {
    Stage stage("next file late 30s");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    std::thread waiting([&stage] { EXPECT_EQ(stage.tell("wait"), ""); });
    auto other = ControlClient::connect((stage.folder() / "control").string());
    ASSERT_TRUE(other);
    EXPECT_TRUE(other->ask("dial raw")->ok);
    EXPECT_TRUE(other->ask("unplug")->ok);  // what the other one waits for will not come
    waiting.join();
}

TEST(Control, TakesLinesThatComeInOneGo) {
    Stage stage;
    stage.open();
    auto client = ControlClient::connect((stage.folder() / "control").string());
    ASSERT_TRUE(client);
    EXPECT_TRUE(client->ask("warning 1\nwarning 2")->ok);
    stage.wait();
    EXPECT_EQ(stage.recorder.calls(),
              (std::vector<std::string>{"OnConnected 3", "OnWarning 0x00000001",
                                        "OnWarning 0x00000002"}));
}

TEST(Control, IsGoneAfterRelease) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    stage.wait();
    EXPECT_TRUE(Release());
    EXPECT_FALSE(ControlClient::connect((stage.folder() / "control").string()));
    EXPECT_EQ(stage.tell("warning 1"), "the SDK has been released");
    ASSERT_TRUE(stage.init());
}

TEST(Control, IsNotListenedForWithoutTheVariable) {
    Stage stage;
    unsetenv("CAMERA_SIM_CONTROL");
    ASSERT_TRUE(stage.init());
    EXPECT_FALSE(std::filesystem::exists(stage.folder() / "control"));
}
