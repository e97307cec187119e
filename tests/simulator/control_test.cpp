// The control socket and the state that it prints.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/wait.h>

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
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00000002"));
    EXPECT_EQ(stage.recorder.calls(),
              (std::vector<std::string>{"OnConnected 3", "OnWarning 0x00000001",
                                        "OnWarning 0x00000002"}));
}

TEST(Control, IsWhatTheCommandSpeaks) {
    Stage stage;
    stage.open();
    const auto output = stage.folder() / "output";
    const auto run = [&](const std::string& arguments) {
        const std::string command =
            std::string(CAMERA_SIM_COMMAND) + " " + arguments + " >" + output.string() + " 2>&1";
        const int status = std::system(command.c_str());
        std::ifstream file(output);
        return std::to_string(WEXITSTATUS(status)) + " " +
               std::string(std::istreambuf_iterator<char>(file), {});
    };
    // The variable names the socket.
    EXPECT_EQ(run("deliver 'a \"b\".JPG' 0xFFFFFFFF"), "0 ");
    EXPECT_TRUE(stage.recorder.got("OnCompleteDownload \"a \"b\".JPG\" 0xFFFFFFFF"));
    EXPECT_EQ(run("'camera \"A B\" over USB, card wet'"),
              "1 camera-sim: a card is in, out or full\n");
    EXPECT_EQ(run("state").substr(0, 15), "0 session open\n");
    const std::string socket = std::getenv("CAMERA_SIM_CONTROL");
    unsetenv("CAMERA_SIM_CONTROL");
    EXPECT_EQ(run("--socket " + socket + " <<'END'\nwarning 1\nwarning 2\nEND\n:"), "0 ");
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00000002"));
    EXPECT_EQ(run("--socket /nowhere state"),
              "2 camera-sim: no virtual camera listens at /nowhere\n");
    EXPECT_EQ(run("state").substr(0, 17), "2 usage: camera-s");
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
