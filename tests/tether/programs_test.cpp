// Programs that are run for pictures.
#include "tether/watch/programs.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/temporary_folder.h"
#include "tether/live/happenings.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;

class ProgramsTest : public testing::Test {
  protected:
    static host::Picture picture(const std::string& id) {
        host::Picture picture;
        picture.id = id;
        picture.path = "/" + id;
        return picture;
    }

    static tether::ProgramEnded next_end() {
        const auto happening = tether::happenings().next(host::after(seconds(30)));
        const auto* ended = happening ? std::get_if<tether::ProgramEnded>(&*happening) : nullptr;
        return ended == nullptr ? tether::ProgramEnded{"", "nothing ended"} : *ended;
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
};

TEST_F(ProgramsTest, OneThatTakesTooLongIsKilledWithAllThatItHasStarted) {
    tether::Programs programs(
        {"/bin/sh", "-c", "sleep 600 & echo $! > '" + (folder_ / "started").string() + "'; wait"},
        milliseconds(700));
    programs.run(picture("one"));
    const tether::ProgramEnded ended = next_end();
    EXPECT_EQ(ended.picture, "one");
    EXPECT_EQ(ended.trouble, "sh took too long and was killed");
    std::ifstream started(folder_ / "started");
    pid_t process = 0;
    ASSERT_TRUE(started >> process) << "it had no time to start anything";
    // Its parent is dead, and who takes it over reaps it in its own time.
    const host::TimePoint deadline = host::after(seconds(30));
    const auto state = [&] {
        std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
        std::string word;
        stat >> word >> word >> word;
        return word;
    };
    while (kill(process, 0) == 0 && state() != "Z" && host::Clock::now() < deadline) {}
    EXPECT_LT(host::Clock::now(), deadline);
}

TEST_F(ProgramsTest, ThoseThatWaitAreStartedAsOthersEnd) {
    tether::Programs programs({"/bin/true"});
    for (const char* id : {"1", "2", "3", "4"}) {
        programs.run(picture(id));
    }
    EXPECT_EQ(programs.running(), 2u);
    for (int count = 0; count < 4; ++count) {
        const tether::ProgramEnded ended = next_end();
        EXPECT_EQ(ended.trouble, "");
        programs.ended(ended.picture);
    }
    EXPECT_EQ(programs.running(), 0u);
}

TEST_F(ProgramsTest, NoneIsStartedOnceTheyAreStopped) {
    tether::Programs programs({"/bin/true"});
    for (const char* id : {"1", "2", "3", "4"}) {
        programs.run(picture(id));
    }
    programs.stop_starting();
    EXPECT_EQ(programs.left(), 2u);
    programs.ended(next_end().picture);
    programs.ended(next_end().picture);
    EXPECT_EQ(programs.running(), 0u);
}

TEST_F(ProgramsTest, OneThatCannotBeStartedIsSaid) {
    std::ofstream(folder_ / "none") << "no program";
    tether::Programs programs({folder_ / "none"});
    programs.run(picture("1"));
    EXPECT_NE(next_end().trouble.find(folder_ / "none"), std::string::npos);
}

TEST_F(ProgramsTest, ANameIsLookedForInPathAndAPathIsNot) {
    std::string why;
    EXPECT_EQ(fs::path(tether::find_program("sh", why).value_or("")).filename(), "sh");
    EXPECT_EQ(tether::find_program("/bin/sh", why), "/bin/sh");
    EXPECT_FALSE(tether::find_program("", why));
    EXPECT_FALSE(tether::find_program(folder_, why));
    EXPECT_EQ(why, "there is no program that can be run at " + folder_.string());
    EXPECT_FALSE(tether::find_program("no-such-program-anywhere", why));
    EXPECT_EQ(why, "there is no program no-such-program-anywhere in PATH");
}

}  // namespace
