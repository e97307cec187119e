// The control socket and the state that it prints.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/simulator/other_process.h"
#include "tests/simulator/stage.h"
#include "tests/simulator/system_calls.h"

using namespace SCRSDK;
using camera_sim::ControlClient;

namespace {

// A socket as a program without the SDK makes it.
class PlainSocket {
  public:
    PlainSocket() : socket_(socket(AF_UNIX, SOCK_STREAM, 0)) {}
    ~PlainSocket() {
        ::close(socket_);
    }
    PlainSocket(const PlainSocket&) = delete;
    PlainSocket& operator=(const PlainSocket&) = delete;

    void bind(const std::filesystem::path& path) {
        set(path);
        EXPECT_EQ(::bind(socket_, plain(), sizeof address_), 0);
    }
    void listen() {
        EXPECT_EQ(::listen(socket_, 1), 0);
    }
    void connect(const std::filesystem::path& path) {
        set(path);
        EXPECT_EQ(::connect(socket_, plain(), sizeof address_), 0);
    }
    void send(const std::string& text) {
        EXPECT_EQ(::send(socket_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    }
    std::string receive(std::size_t bytes) {
        std::string text(bytes, '\0');
        const ssize_t got = recv(socket_, text.data(), bytes, MSG_WAITALL);
        return text.substr(0, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    }

  private:
    const sockaddr* plain() const {
        return reinterpret_cast<const sockaddr*>(&address_);
    }
    void set(const std::filesystem::path& path) {
        address_.sun_family = AF_UNIX;
        std::strcpy(address_.sun_path, path.c_str());
    }

    int socket_;
    sockaddr_un address_{};
};

}  // namespace

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
    const auto unplugged = std::chrono::steady_clock::now();
    EXPECT_TRUE(other->ask("unplug")->ok);  // what the other one waits for will not come
    waiting.join();
    EXPECT_LT(std::chrono::steady_clock::now() - unplugged, std::chrono::seconds(15))
        << "a file that will not come is waited for";
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

// The status of camera-sim, a space, and what it says.
std::string run_command(const std::string& arguments, const std::filesystem::path& output) {
    const std::string command =
        std::string(CAMERA_SIM_COMMAND) + " " + arguments + " >" + output.string() + " 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream file(output);
    return std::to_string(WEXITSTATUS(status)) + " " +
           std::string(std::istreambuf_iterator<char>(file), {});
}

TEST(Control, IsWhatTheCommandSpeaks) {
    Stage stage;
    stage.open();
    const auto run = [&](const std::string& arguments) {
        return run_command(arguments, stage.folder() / "output");
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

TEST(Control, TheCommandTellsItsOptionsAndItsVersion) {
    Stage stage;
    const auto run = [&](const std::string& arguments) {
        return run_command(arguments, stage.folder() / "output");
    };
    EXPECT_EQ(run("--version").substr(0, 15), "0 camera-sim 1.");
    EXPECT_EQ(run("--sokcet /a state"),
              "2 camera-sim: there is no option --sokcet; there are --socket, --help and "
              "--version\n");
    EXPECT_EQ(run("--socket").substr(0, 17), "2 usage: camera-s");
    std::istringstream help(run("--help"));
    bool has_example = false;
    for (std::string line; std::getline(help, line);) {
        EXPECT_LE(line.size(), 80u) << line;
        has_example = has_example || line == "Example:";
    }
    EXPECT_TRUE(has_example);
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

TEST(ControlDeath, WhatIsNoSocketIsRefusedAndKept) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    const auto path = stage.folder() / "control";
    const auto target = stage.folder() / "target";
    std::ofstream(target) << "the user's own";
    const std::function<void()> makers[] = {
        [&] { std::filesystem::copy(target, path); },
        [&] { std::filesystem::create_symlink(target, path); },
        [&] { std::filesystem::create_symlink("/nowhere", path); },
        [&] { std::filesystem::create_directory(path); },
        [&] { mkfifo(path.c_str(), 0600); },
    };
    for (const auto& make : makers) {
        make();
        const auto kind = std::filesystem::symlink_status(path).type();
        setenv("CAMERA_SIM_CONTROL", path.c_str(), 1);  // of this stage, in the child too
        EXPECT_DEATH(
            {
                setenv("CAMERA_SIM_CONTROL", path.c_str(), 1);
                Init(0);
            },
            "camera-sim: CAMERA_SIM_CONTROL: .*/control is no socket, and is left alone");
        EXPECT_EQ(std::filesystem::symlink_status(path).type(), kind);
        std::filesystem::remove(path);
    }
}

TEST(Control, ASocketThatNobodyAnswersAtIsReplaced) {
    Stage stage;
    { PlainSocket().bind(stage.folder() / "control"); }
    ASSERT_TRUE(stage.init());
    stage.wait();
}

TEST(Control, OfTwoOnOnePathTheSecondIsRefused) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    const std::string errors = stage.folder() / "errors";
    OtherProcess second(stage.shots().string(), 0, errors);
    EXPECT_FALSE(second.line());
    EXPECT_EQ(second.end(), -SIGABRT);
    std::ifstream file(errors);
    const std::string said{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(said.find("camera-sim: CAMERA_SIM_CONTROL: " + (stage.folder() / "control").string() +
                        " is where another virtual camera listens already"),
              std::string::npos)
        << said;
    stage.wait();
    EXPECT_TRUE(ControlClient::connect((stage.folder() / "control").string()));
}

// Also with a socket of a dead camera, which each of them would like to replace.
TEST(Control, OfSeveralAtTheSameMomentOneStays) {
    Stage stage;
    const std::string path = stage.folder() / "control";
    for (const bool left_behind : {false, true}) {
        if (left_behind) {
            PlainSocket().bind(path);
        }
        std::vector<std::unique_ptr<OtherProcess>> all;
        all.reserve(4);
        for (int count = 0; count < 4; ++count) {
            all.push_back(std::make_unique<OtherProcess>(stage.shots().string(), 0,
                                                         (stage.folder() / "errors").string()));
        }
        OtherProcess* first = nullptr;
        for (const auto& process : all) {
            if (process->line()) {
                EXPECT_EQ(first, nullptr) << "two listen";
                first = process.get();
            }
        }
        ASSERT_NE(first, nullptr);
        auto client = ControlClient::connect(path);
        ASSERT_TRUE(client);
        EXPECT_TRUE(client->ask("wait")->ok);
        EXPECT_EQ(first->end(), 0);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST(Control, ASocketThatHasTakenItsPlaceIsLeftThere) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    const auto path = stage.folder() / "control";
    std::filesystem::remove(path);
    PlainSocket other;
    other.bind(path);
    EXPECT_TRUE(Release());
    EXPECT_TRUE(std::filesystem::exists(path));
    ASSERT_TRUE([&] {
        std::filesystem::remove(path);
        return stage.init();
    }());
}

TEST(Control, ALineHasAnEnd) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    const std::string longest = "# " + std::string(64 * 1024 - 2, 'x');
    EXPECT_EQ(stage.tell(longest), "");
    EXPECT_EQ(stage.tell(longest + "x"), "a line has at most 65536 bytes");
    EXPECT_EQ(stage.tell(std::string(5'000'000, 'x')), "a line has at most 65536 bytes");
    EXPECT_EQ(stage.tell("warning"), "CODE is missing");
}

#if defined(__linux__)

TEST(Control, IsOpenToItsUserOnlyFromTheFirstMoment) {
    Stage stage;
    const std::string path = stage.folder() / "control";
    const auto mode = [&path] {
        struct stat facts {};
        EXPECT_EQ(stat(path.c_str(), &facts), 0);
        return facts.st_mode & 0777;
    };
    mode_t at_first = 0;
    system_calls::after_bind = [&] {
        at_first = mode();
    };
    const mode_t before = umask(0);
    EXPECT_TRUE(stage.init());
    umask(before);
    system_calls::leave_alone();
    EXPECT_EQ(at_first, 0600U);
    EXPECT_EQ(mode(), 0600U);
}

namespace {

// Leaves the process: 0 when all went well.
void ask_without_descriptors(Stage& stage) {
    ASSERT_TRUE(stage.init());
    PlainSocket client;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit few = before;
    few.rlim_cur = 100;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    std::vector<int> taken;
    for (int descriptor; (descriptor = dup(STDERR_FILENO)) >= 0;) {
        taken.push_back(descriptor);
    }
    system_calls::accepts_failed = 0;
    const auto start = std::chrono::steady_clock::now();
    client.connect(stage.folder() / "control");
    client.send("wait\n");
    while (system_calls::accepts_failed < 3) {
        ASSERT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
        std::this_thread::yield();
    }
    // It looks again now and then, and does not turn round and round meanwhile.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(80));
    for (const int descriptor : taken) {
        close(descriptor);
    }
    EXPECT_EQ(client.receive(3), "ok\n");
    stage.wait();
}

}  // namespace

// In a process of its own: a thread of an earlier test that ends now would free a descriptor.
TEST(ControlDeath, OutlivesAProcessWithoutDescriptors) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Stage stage;
    EXPECT_EXIT(
        {
            ask_without_descriptors(stage);
            std::_Exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

#endif
