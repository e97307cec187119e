// The doctor's whole round, and the command.
#include "tether/doctor/examination.h"

#include "tests/host/child.h"
#include "tests/tether/doctor/bundle_fixture.h"

namespace {

namespace fs = std::filesystem;

class Examination : public BundleTest {
  protected:
    // The findings' verdicts and what each is about: "ok worker".
    std::vector<std::string> examine(const doctor::System& on,
                                     const std::optional<fs::path>& pictures = {}) const {
        std::vector<std::string> subjects;
        doctor::examine(folder, pictures, on, [&](const doctor::Finding& finding) {
            const std::string text = said(finding);
            subjects.push_back(text.substr(0, text.find(':')));
        });
        return subjects;
    }

    // What the command prints in the folder, and its exit status at the end.
    std::string tether_doctor(const std::vector<std::string>& arguments) const {
        std::vector<std::string> all{"-c", "cd \"$0\" && exec \"$@\"", folder, TETHER_COMMAND,
                                     "doctor"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const auto command = start({"/bin/sh", all, {}, folder / "stderr"});
        std::string output;
        while (const auto line = command->next_line(host::after(patience))) {
            output += line->text + "\n";
        }
        const auto exit = command->await_exit(host::after(patience));
        return output + (exit ? describe(*exit) : "still running");
    }

    const doctor::System system = doctor::this_system();
    // Nobody holds a camera on it.
    const doctor::System quiet{system.is_macos, [](const auto&) {
                                   return doctor::Answer{0, ""};
                               }};
};

using Subjects = std::vector<std::string>;

TEST_F(Examination, OfAGoodTree) {
    Subjects expected{"ok worker", "ok run path", "ok SDK library", "ok USB adapter"};
    if (system.is_macos) {
        expected.push_back("ok signature");
    }
    expected.push_back("ok start");
    EXPECT_EQ(examine(quiet), expected);
    EXPECT_EQ(examine(quiet, folder / "no").back(), "FAIL folder");
}

TEST_F(Examination, OthersMatterOnlyToARealCamera) {
    take_for_the_makers();
    const Subjects found = examine(quiet);
    EXPECT_EQ(found[3], "FAIL USB adapter");
    EXPECT_EQ(found[found.size() - 2], "ok other programs");
    EXPECT_EQ(found.back(), "ok start");
}

TEST_F(Examination, OfNothing) {
    fs::remove_all(contents);
    EXPECT_EQ(examine(quiet), Subjects{"FAIL worker"});
}

TEST_F(Examination, OfAScript) {
    write_script("echo nonsense");
    EXPECT_EQ(examine(quiet), (Subjects{"warn worker", "ok other programs", "FAIL start"}));
}

TEST_F(Examination, OfATreeForTheOtherSystem) {
    const doctor::System other{!system.is_macos, quiet.run};
    EXPECT_EQ(examine(other).back(), "warn start");
}

TEST_F(Examination, TheCommandPrintsAndPasses) {
    fs::create_directory(folder / "shots");
    EXPECT_TRUE(holds(tether_doctor({folder}), "    folder: shots takes files, "));
    const std::string output = tether_doctor({folder, "--folder", folder});
    EXPECT_TRUE(output.starts_with("ok    worker: " + worker.string())) << output;
    EXPECT_TRUE(holds(output, "\nok    start: ready after ")) << output;
    EXPECT_TRUE(holds(output, "    folder: " + folder.string() + " takes files, ")) << output;
    EXPECT_TRUE(output.ends_with("\nstatus 0")) << output;
}

TEST_F(Examination, TheCommandLooksAtItsOwnTree) {
    const std::string output = tether_doctor({});
    EXPECT_TRUE(output.starts_with("ok    worker: " + fs::canonical(WORKER).string())) << output;
    EXPECT_FALSE(holds(output, " folder: ")) << output;
    EXPECT_TRUE(output.ends_with("\nstatus 0")) << output;
}

TEST_F(Examination, TheCommandFails) {
    fs::remove(sdk);
    const std::string output = tether_doctor({folder});
    EXPECT_TRUE(holds(output, "\nFAIL  SDK library: ")) << output;
    EXPECT_TRUE(holds(output, " is not there\n      The library belongs in Contents/")) << output;
    EXPECT_TRUE(output.ends_with("\nstatus 1")) << output;
}

TEST_F(Examination, AWarningFailsNothing) {
    fs::create_directory(folder / "X.app");
    fs::rename(contents, folder / "X.app/Contents");
    const std::string output = tether_doctor({folder / "X.app"});
    EXPECT_TRUE(holds(output, "\nwarn  SDK library: ")) << output;
    EXPECT_TRUE(output.ends_with("\nstatus 0")) << output;
}

}  // namespace
