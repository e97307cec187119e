// A tethered shoot.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>

#include "tests/tether/command_test.h"

namespace {

using ShootTest = CommandTest;

TEST_F(ShootTest, ShotsArriveAndAreSummedUp) {
    start_tether({"--shots", "3"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" > CONNECT\n")) << output_;
    EXPECT_TRUE(printed(" < CONNECTED|MODEL-A\n")) << output_;
    EXPECT_TRUE(printed("         · shot 2 of 3 on its way\n")) << output_;
    EXPECT_TRUE(printed("/DSC00003.JPG\n")) << output_;
    EXPECT_TRUE(printed("\n  DSC00002.JPG       26 B  0.")) << output_;
    EXPECT_TRUE(printed("\n3 shots, 3 files, 76 B in " + (folder_ / "shots").string() +
                        "; nothing lost.\nFrom shutter to file 0."))
        << output_;
    EXPECT_EQ(read("shots/DSC00001.JPG"), jpeg("first picture"));
    EXPECT_EQ(read("shots/DSC00002.JPG"), jpeg("the second one"));
    EXPECT_EQ(output_.find('\x1b'), std::string::npos) << "colours belong on a terminal only";
}

TEST_F(ShootTest, TheWordShootDoesTheSame) {
    start_command("shoot", {"--shots", "1"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n1 shot, 1 file, 25 B in ")) << output_;
}

TEST_F(ShootTest, FilesAreNamedByATemplate) {
    start_tether({"--shots", "2", "--name", "studio/{n:3}"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n  studio/001.JPG  ")) << output_;
    EXPECT_TRUE(fs::exists(folder_ / "shots/studio/002.JPG"));
}

TEST_F(ShootTest, ARawPairIsAwaitedWhole) {
    if (!PICTURES_CAN_BE_DRAWN) {
        GTEST_SKIP() << "only the picture module makes RAW files";
    }
    write("scene", "timing instant\npicture 320x240\ncamera \"MODEL-A\" over USB, card in\n");
    start_tether({"--shots", "1", "--file-type", "both", "--save-dest", "both"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n1 shot, 2 files, ")) << output_;
    EXPECT_TRUE(fs::exists(folder_ / "shots/DSC00001.ARW"));
    EXPECT_TRUE(fs::exists(folder_ / "shots/DSC00001.JPG"));
}

TEST_F(ShootTest, ShotsForTheCardStayThere) {
    start_tether({"--shots", "2", "--save-dest", "card"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n2 shots, 0 files, 0 B in ")) << output_;
}

TEST_F(ShootTest, AFileOutsideOfTheFolderIsNotAccepted) {
    write("elsewhere.JPG", "private");
    start_tether({"--shots", "2", "--every", "3"});
    read_to("DOWNLOADED|");
    tell_camera("deliver \"" + (folder_ / "elsewhere.JPG").string() + "\" 0xFFFFFFFF");
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    EXPECT_TRUE(printed("\n! ") && printed((folder_ / "elsewhere.JPG").string())) << output_;
    EXPECT_EQ(read("elsewhere.JPG"), "private");
}

TEST_F(ShootTest, APictureOfTheButtonIsBroughtInAndNotTakenForAShot) {
    start_tether({"--shots", "2", "--every", "4"});
    read_to("DOWNLOADED|");
    tell_camera("shutter");
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n  DSC00002.JPG       26 B  not asked for\n")) << output_;
    EXPECT_TRUE(printed("\n2 shots, 3 files, ")) << output_;
}

TEST_F(ShootTest, ALostCameraIsConnectedAgain) {
    start_tether({"--shots", "2", "--every", "4"});
    read_to("DOWNLOADED|");
    tell_camera("unplug");
    read_to("the camera went away; waiting for it");
    tell_camera("plug");
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    EXPECT_TRUE(printed("\nThe camera went away once.\n")) << output_;
}

TEST_F(ShootTest, AWorkerThatDiesAgainAndAgainIsSaidSo) {
    const std::string dying = script("dying", R"(
echo 'CPP_WORKER|START sony-1.0'
echo 'READY|OK'
read line
kill -9 $$
)");
    start_tether({"--worker", dying});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("! The worker ended by itself (signal 9).")) << output_;
    EXPECT_TRUE(printed("\n0 of 3 shots, 0 files, ")) << output_;
}

// Its own sentence is often all that there is to know.
TEST_F(ShootTest, WhatAWorkerSaysBeforeItGivesUpIsSaid) {
    start_tether({"--worker", script("broken", "echo 'the library is missing' >&2\nexit 3\n")});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(
        printed("! The worker ended before it was ready (status 3). It said: \"the library "
                "is missing\"."))
        << output_;
    EXPECT_TRUE(printed("; 3 shots not fired.\n")) << output_;
}

// A camera's file name, or another worker, may hold what would clear the screen or rename the
// window.
TEST_F(ShootTest, WhatAWorkerSaysMovesNoCursor) {
    const std::string odd = script("odd", R"(
printf 'STATUS|a\033[2J\302\233m\302\265\n'
printf '\033]0;x\007\n' >&2
exit 3
)");
    tether_ = start(
        {TETHER_COMMAND, {"--folder", folder_ / "shots", "--worker", odd}, {}, folder_ / "errors"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("< STATUS|a\\x1B[2J\\xC2\\x9Bm\xC2\xB5\n")) << output_;
    EXPECT_EQ(output_.find('\x1b'), std::string::npos) << output_;
    const std::string errors = read("errors");
    EXPECT_TRUE(errors.starts_with("\\x1B]0;x\\x07\n")) << errors;
}

// Found, opened, and silent: not the same as no camera.
TEST_F(ShootTest, ACameraThatDoesNotAnswerIsNotCalledMissing) {
    write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\nanswer never\n");
    start_tether({"--shots", "1", "--wait", "25"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("\n! The camera does not answer.\n")) << output_;
    EXPECT_FALSE(printed("No camera was found")) << output_;
}

TEST_F(ShootTest, AWorkerThatDiesOnceIsReplacedAndCostsNothing) {
    const std::string dying =
        script("dying", "[ -e " + (folder_ / "died").string() + " ] && exec " WORKER "\n: > " +
                            (folder_ / "died").string() + "\nexit 3\n");
    start_tether({"--worker", dying, "--shots", "1"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n1 shot, 1 file, 25 B in ")) << output_;
}

TEST_F(ShootTest, AWorkerThatHangsAtTheEndIsKilledAndSaidSo) {
    write("scene", "timing instant\nnext Disconnect hangs\n");
    const std::string deaf = script("deaf", "trap '' TERM\n" WORKER "\nsleep 60\n");
    start_tether({"--worker", deaf, "--shots", "1"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("\n! the worker had to be killed\n")) << output_;
    EXPECT_TRUE(printed("\n1 shot, 1 file, 25 B in ")) << output_;
}

TEST_F(ShootTest, AnInterruptEndsTheWorkerInOrder) {
    start_tether({"--shots", "100"});
    read_to("DOWNLOADED|");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("! interrupted\n")) << output_;
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

TEST_F(ShootTest, AFolderThatTheWorkerWouldCutIsRefused) {
    fs::path folder = folder_ / "shots";
    for (int level = 0; level < 6; ++level) {
        folder /= std::string(250, '%');
    }
    fs::create_directories(folder);
    const auto command = start({TETHER_COMMAND, {"--folder", folder}, {}, folder_ / "errors"});
    std::string output;
    while (const auto line = command->next_line(host::after(patience))) {
        output += line->text + "\n";
    }
    EXPECT_EQ(describe(*command->await_exit(host::after(patience))), "status 1");
    EXPECT_NE(output.find("\n! The folder"), std::string::npos) << output;
    EXPECT_EQ(output.find("CONNECT"), std::string::npos) << output;
}

TEST_F(ShootTest, AFolderWhoseParentIsMissingIsNotMade) {
    EXPECT_EQ(refusal_of({"--folder", folder_ / "no/shots"}),
              "tether: cannot make the folder " + (folder_ / "no/shots").string() +
                  ": the one that it is in is missing\n");
    EXPECT_FALSE(fs::exists(folder_ / "no"));
}

// What nobody reads stops the printing, and nothing else.
TEST_F(ShootTest, AnOutputThatNobodyReadsCostsNoPicture) {
    start_tether({"--shots", "3", "--every", "1"});
    read_to("DOWNLOADED|");
    tell_camera("storm 20000 0x0106");
    const host::TimePoint deadline = host::after(patience);
    while (!fs::exists(folder_ / "shots/DSC00003.JPG") && host::Clock::now() < deadline) {
        tell_camera("wait");
    }
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n3 shots, 3 files, ")) << output_.substr(output_.size() - 500);
}

// The lock, and the note of who has it.
TEST_F(ShootTest, AFolderInUseIsSaidAtOnceAndAtTheEnd) {
    write("shots/.incoming/lock", "4711\n");
    const host::Descriptor lock(
        ::open((folder_ / "shots/.incoming/lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(flock(lock.number(), LOCK_EX | LOCK_NB), 0);
    const std::string said =
        "The folder " + (folder_ / "shots").string() + " is used by another program, process 4711";
    start_tether({"--wait", "1"});
    read_to("         · " + said + "; waiting until it ends");
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("\n! " + said + ".\n")) << output_;
    EXPECT_FALSE(printed("disk")) << output_;
}

TEST_F(ShootTest, AProcessThatTheWorkerLeavesBehindHoldsNobodyUp) {
    const std::string parent = script(
        "parent", "[ -e " + (folder_ / "left").string() + " ] || { sleep 1000 3>&- & echo $! >" +
                      (folder_ / "left").string() + "; }\nexec " WORKER "\n");
    start_tether({"--worker", parent, "--shots", "1"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_EQ(kill(std::stoi(read("left")), SIGKILL), 0) << "it must have outlived tether";
}

}  // namespace
