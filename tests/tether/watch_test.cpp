// A watch that stays with a camera.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <signal.h>
#include <sstream>
#include <utility>

#include "tests/tether/command_test.h"

namespace {

class WatchTest : public CommandTest {
  protected:
    // With a session.
    void watch(std::vector<std::string> arguments = {}) {
        start_command("watch", std::move(arguments));
        read_to(" is ready");
    }

    std::string interrupted() {
        tether_->signal(SIGINT);
        return status();
    }
};

TEST_F(WatchTest, EveryPictureIsBroughtInAlsoThoseOfTheButton) {
    watch();
    tell_camera("shutter");
    read_to(" + DSC00001.JPG  25 B");
    tell_camera("shutter");
    read_to(" + DSC00002.JPG  26 B");
    EXPECT_EQ(interrupted(), "status 0");
    EXPECT_TRUE(printed(" 2 pictures in " + (folder_ / "shots").string() + "\n")) << output_;
    EXPECT_EQ(read("shots/DSC00002.JPG"), jpeg("the second one"));
    EXPECT_EQ(output_.find('\x1b'), std::string::npos) << "colours belong on a terminal only";
}

TEST_F(WatchTest, ACameraThatGoesAwayIsWaitedFor) {
    watch();
    tell_camera("unplug");
    read_to("! The camera went away.");
    tell_camera("plug");
    read_to(" is ready");
    tell_camera("shutter");
    read_to(" + DSC00001.JPG");
    EXPECT_EQ(interrupted(), "status 0");
}

TEST_F(WatchTest, EachSignalToEndEndsInOrder) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        fs::remove(folder_ / "journal");
        watch();
        tether_->signal(signal);
        EXPECT_EQ(status(), "status 0") << signal;
        EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos) << signal;
    }
}

TEST_F(WatchTest, AWorkerThatCannotBeStartedIsSaidAndEndsIt) {
    write("none", "no program");
    start_command("watch", {"--worker", folder_ / "none"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed(" ! ") && printed((folder_ / "none").string())) << output_;
}

// The worker has brought the picture, and nobody has read its report.
TEST_F(WatchTest, WhatAKilledWatchHasLeftIsBroughtInByTheNext) {
    watch();
    tether_->signal(SIGSTOP);
    tell_camera("shutter");
    tell_camera("wait");
    tether_->signal(SIGKILL);
    status();
    EXPECT_FALSE(fs::exists(folder_ / "shots/DSC00001.JPG"));
    start_command("watch", {});
    read_to(" + DSC00001.JPG  25 B  found later");
    EXPECT_EQ(interrupted(), "status 0");
    EXPECT_EQ(read("shots/DSC00001.JPG"), jpeg("first picture"));
}

TEST_F(WatchTest, TheRecordHoldsTheLinesThatAreNotShown) {
    watch({"--record", folder_ / "record"});
    EXPECT_EQ(interrupted(), "status 0");
    expect_in_order(read("record"), {" < READY|OK\n", " > CONNECT\n", " # interrupted\n",
                                     " > QUIT\n", " # the worker ended in order\n"});
    EXPECT_FALSE(printed("CONNECT")) << output_;
}

TEST_F(WatchTest, AProgramIsRunForEachPictureAndNeverThroughAShell) {
    const std::string program =
        script("program", "printf '<%s>' \"$@\" >> " + (folder_ / "ran").string() + "\n");
    watch({"--exec", program, "--exec", "two words", "--exec", "$(true);", "--name",
           "a b'$(true)-{camera}"});
    tell_camera("shutter");
    read_to(" + ");
    tell_camera("shutter");
    read_to(" + ");
    EXPECT_EQ(interrupted(), "status 0");
    const std::string called =
        "<two words><$(true);><" + (folder_ / "shots").string() + "/a b'$(true)-DSC0000";
    const std::string first = called + "1.JPG>";
    const std::string second = called + "2.JPG>";
    // Two programs run at a time, and either may be the sooner.
    const std::string ran = read("ran");
    EXPECT_TRUE(ran == first + second || ran == second + first) << ran;
}

TEST_F(WatchTest, AtMostTwoProgramsRunAtATime) {
    const std::string log = folder_ / "log";
    const std::string gate = folder_ / "gate";
    const std::string program = script("program", "echo begin >> " + log + "\nuntil [ -e " + gate +
                                                      " ]; do :; done\necho end >> " + log + "\n");
    watch({"--exec", program});
    for (int picture = 0; picture < 5; ++picture) {
        tell_camera("shutter");
        read_to(" + ");
    }
    const host::TimePoint deadline = host::after(patience);
    const auto await = [&](const std::string& line, std::size_t times) {
        const auto count = [&] {
            std::istringstream lines(read("log"));
            return std::count(std::istream_iterator<std::string>(lines), {}, line);
        };
        while (std::cmp_less(count(), times) && host::Clock::now() < deadline) {
            tell_camera("wait");
        }
    };
    await("begin", 2);
    write("gate", "");
    // Each picture's program is over before the watch is.
    await("end", 5);
    EXPECT_EQ(interrupted(), "status 0");
    int running = 0;
    int most = 0;
    std::ifstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        running += line == "begin" ? 1 : -1;
        most = std::max(most, running);
    }
    EXPECT_EQ(most, 2) << read("log");
    EXPECT_EQ(running, 0);
}

TEST_F(WatchTest, AProgramThatFailsIsSaidAndCostsNoPicture) {
    watch({"--exec", script("failing", "exit 3\n")});
    tell_camera("shutter");
    read_to(" ! failing ended with status 3");
    tell_camera("shutter");
    read_to(" ! failing ended with status 3");
    EXPECT_EQ(interrupted(), "status 0");
    EXPECT_TRUE(printed(" 2 pictures in ")) << output_;
}

// A second interrupt kills the programs.
TEST_F(WatchTest, AProgramThatHangsCostsNoPictureAndEachGetsItsOwnAtTheNextStart) {
    watch({"--exec", script("hanging", "exec sleep 600\n")});
    for (int picture = 1; picture <= 3; ++picture) {
        tell_camera("shutter");
        read_to(" + DSC0000" + std::to_string(picture));
    }
    tether_->signal(SIGINT);
    read_to("waiting for 2 programs; once more to kill");
    EXPECT_TRUE(printed(" ! 1 picture gets its program at the next start\n")) << output_;
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" ! hanging ended with signal 9\n")) << output_;
    EXPECT_TRUE(fs::exists(folder_ / "shots/DSC00003.JPG"));
    EXPECT_TRUE(printed(" ! 2 pictures get their program at the next start\n")) << output_;
    const std::string program =
        script("program", "echo \"${1##*/}\" >> " + (folder_ / "ran").string() + "\n");
    watch({"--exec", program});
    EXPECT_EQ(interrupted(), "status 0");
    const std::string ran = read("ran");
    EXPECT_EQ(ran.size(), 3 * std::string("DSC00001.JPG\n").size()) << ran;
    for (const char* name : {"DSC00001.JPG\n", "DSC00002.JPG\n", "DSC00003.JPG\n"}) {
        EXPECT_NE(ran.find(name), std::string::npos) << ran;
    }
}

TEST_F(WatchTest, AHangUpThatItWasToldToIgnoreIsIgnored) {
    ignored_ = "HUP";
    watch();
    tether_->signal(SIGHUP);
    tell_camera("shutter");
    read_to(" + DSC00001.JPG");
    EXPECT_EQ(interrupted(), "status 0");
}

// So a shell starts what it does not wait for.
TEST_F(WatchTest, AnInterruptThatItWasToldToIgnoreEndsIt) {
    ignored_ = "INT QUIT";
    watch();
    EXPECT_EQ(interrupted(), "status 0");
}

// A picture is known once its program has ended.
TEST_F(WatchTest, APictureWhoseProgramWasCutShortGetsItAtTheNextStart) {
    watch({"--exec", script("hanging", "exec sleep 600\n")});
    tell_camera("shutter");
    read_to(" + DSC00001.JPG");
    tether_->signal(SIGKILL);
    EXPECT_TRUE(tether_->await_exit(host::after(patience)));  // the program has its output still
    const std::string program =
        script("program", "echo \"$1\" >> " + (folder_ / "ran").string() + "\n");
    watch({"--exec", program});
    EXPECT_EQ(interrupted(), "status 0");
    EXPECT_EQ(read("ran"), (folder_ / "shots/DSC00001.JPG").string() + "\n");
    watch({"--exec", program});
    EXPECT_EQ(interrupted(), "status 0");
    EXPECT_EQ(read("ran"), (folder_ / "shots/DSC00001.JPG").string() + "\n") << "once is enough";
}

TEST_F(WatchTest, AProgramThatIsNotThereIsRefusedAtOnce) {
    for (const char* program : {"/no/such/program", "no-such-program-anywhere", "/tmp"}) {
        fs::remove(folder_ / "stderr");
        start_command("watch", {"--exec", program});
        EXPECT_EQ(status(), "status 2");
        EXPECT_NE(read("stderr").find(program), std::string::npos) << read("stderr");
    }
}

}  // namespace
