// The keys of a watch, on a terminal.
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "host/process/pipe.h"
#include "tests/tether/command_test.h"

namespace {

// A watch whose terminal is the test.
class WatchKeysTest : public CommandTest {
  protected:
    WatchKeysTest() : terminal_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        grantpt(terminal_.number());
        unlockpt(terminal_.number());
        screen_ =
            host::Descriptor(open(ptsname(terminal_.number()), O_RDWR | O_NOCTTY | O_CLOEXEC));
        before_ = modes();
    }
    // A root folder made for a build may have the one end of terminals and not the other.
    void SetUp() override {
        if (screen_.number() < 0) {
            GTEST_SKIP() << "this system gives no pseudo-terminal";
        }
    }
    ~WatchKeysTest() override {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            waitpid(process_, nullptr, 0);
        }
    }

    // The process leads a session whose terminal is the screen, as a shell's command does.
    void watch() {
        begin("watch", "space or enter shoots, Ctrl-C ends");
    }

    // Until this text is on the screen.
    void begin(const char* way, const std::string& text) {
        const std::string shots = folder_ / "shots";
        const std::string scene = folder_ / "scene";
        const std::string own = folder_ / "own";
        const std::string control = folder_ / "control";
        process_ = fork();
        if (process_ == 0) {
            setsid();
            ioctl(screen_.number(), TIOCSCTTY, 0);
            for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                dup2(screen_.number(), stream);
            }
            setenv("CAMERA_SIM_CONTROL", control.c_str(), 1);
            execl(TETHER_COMMAND, TETHER_COMMAND, way, "--folder", shots.c_str(), "--scene",
                  scene.c_str(), "--pictures", own.c_str(), nullptr);
            _exit(127);
        }
        see(text);
    }

    void press(char key) {
        ASSERT_EQ(write_key(key), 1);
    }

    // Reads the screen on to this text.
    void see(const std::string& text) {
        const host::TimePoint deadline = host::after(patience);
        while (seen_.find(text) == std::string::npos) {
            pollfd source{terminal_.number(), POLLIN, 0};
            char bytes[4096];
            const bool came = poll(&source, 1, host::poll_timeout(deadline)) == 1;
            const ssize_t count = came ? ::read(terminal_.number(), bytes, sizeof bytes) : 0;
            if (count <= 0) {
                FAIL() << "\"" << text << "\" did not come:\n" << seen_;
            }
            seen_.append(bytes, static_cast<std::size_t>(count));
        }
        seen_.erase(0, seen_.find(text) + text.size());
    }

    // The exit status, while the screen is read.
    std::string status() {
        const host::TimePoint deadline = host::after(patience);
        int status = 0;
        while (waitpid(process_, &status, WNOHANG) == 0) {
            if (host::Clock::now() > deadline) {
                return "still running";
            }
            pollfd source{terminal_.number(), POLLIN, 0};
            char bytes[4096];
            if (poll(&source, 1, 100) == 1) {
                [[maybe_unused]] const ssize_t count =
                    ::read(terminal_.number(), bytes, sizeof bytes);
            }
        }
        process_ = 0;
        return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                   : "status " + std::to_string(WEXITSTATUS(status));
    }

    tcflag_t modes() const {
        termios all{};
        tcgetattr(screen_.number(), &all);
        return all.c_lflag;
    }

    void await_modes(tcflag_t expected) {
        const host::TimePoint deadline = host::after(patience);
        while (modes() != expected && host::Clock::now() < deadline) {}
        EXPECT_EQ(modes(), expected);
    }

    ssize_t write_key(char key) {
        return ::write(terminal_.number(), &key, 1);
    }

    host::Descriptor terminal_;
    host::Descriptor screen_;
    tcflag_t before_ = 0;
    pid_t process_ = 0;
    std::string seen_;
};

constexpr char control_c = 3;
constexpr char control_d = 4;
constexpr char control_z = 26;

TEST_F(WatchKeysTest, SpaceAndEnterShoot) {
    watch();
    press(' ');
    see(" + DSC00001.JPG");
    see(" s after the shutter");
    press('\r');
    see(" + DSC00002.JPG");
    press('x');
    press(control_c);
    EXPECT_EQ(status(), "status 0");
    EXPECT_FALSE(fs::exists(folder_ / "shots/DSC00003.JPG"));
}

// What a worker says is seen line by line where the terminal is the host.
TEST_F(WatchKeysTest, LinesAreColouredOnATerminal) {
    unsetenv("NO_COLOR");
    begin("--interactive", "\x1b[2mLOG|");
}

TEST_F(WatchKeysTest, NothingIsColouredWithNoColor) {
    setenv("NO_COLOR", "1", 1);
    begin("--interactive", " < LOG|");
    unsetenv("NO_COLOR");
}

TEST_F(WatchKeysTest, AnEmptyNoColorAsksForNothing) {
    setenv("NO_COLOR", "", 1);
    begin("--interactive", "\x1b[2mLOG|");
    unsetenv("NO_COLOR");
}

TEST_F(WatchKeysTest, NothingIsColouredWhereTheOutputIsNoTerminal) {
    unsetenv("NO_COLOR");
    start_tether({"--shots", "1"});
    EXPECT_EQ(CommandTest::status(), "status 0");
    EXPECT_TRUE(printed(" < DOWNLOADED|")) << output_;
    EXPECT_EQ(output_.find('\x1b'), std::string::npos) << output_;
}

TEST_F(WatchKeysTest, TheTerminalIsAsItWasOnEveryWayOut) {
    const auto leave_by = [this](const std::function<void()>& leave, const char* how) {
        watch();
        EXPECT_NE(modes(), before_) << "keys are read without an enter behind them";
        leave();
        EXPECT_EQ(status(), "status 0") << how;
        EXPECT_EQ(modes(), before_) << how;
    };
    leave_by([this] { press(control_c); }, "Ctrl-C");
    leave_by([this] { press(control_d); }, "Ctrl-D");
    leave_by([this] { kill(process_, SIGTERM); }, "SIGTERM");
    leave_by([this] { kill(process_, SIGHUP); }, "SIGHUP");
    leave_by([this] { kill(process_, SIGQUIT); }, "SIGQUIT");
}

TEST_F(WatchKeysTest, TheShellFindsTheTerminalAsItWasWhileTheWatchIsStopped) {
    watch();
    const tcflag_t keys = modes();
    press(control_z);
    int status_of_stop = 0;
    ASSERT_EQ(waitpid(process_, &status_of_stop, WUNTRACED), process_);
    ASSERT_TRUE(WIFSTOPPED(status_of_stop));
    EXPECT_EQ(modes(), before_);
    kill(process_, SIGCONT);
    await_modes(keys);
    press(' ');
    see(" + DSC00001.JPG");
    press(control_c);
    EXPECT_EQ(status(), "status 0");
}

TEST_F(WatchKeysTest, WhatTakesTimeIsShownInPlace) {
    write("scene", "timing instant\nopening 2s\ncamera \"MODEL-A\" over USB, card in\n");
    watch();
    press(' ');
    see(" + DSC00001.JPG");
    tell_camera("unplug");
    see("\r         · the camera went away; waiting for it ");
    press(control_c);
    EXPECT_EQ(status(), "status 0");
}

}  // namespace
