// The command line of the transcripts' runner.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "tests/host/child.h"
#include "tests/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

class TranscriptsCommand : public testing::Test {
  protected:
    TranscriptsCommand() {
        std::ofstream(folder_ / "good.transcript") << "# Ends.\n@ cold\n@ exits 0\n";
        std::ofstream(folder_ / "slow.transcript") << "# Ends late.\n@ slow\n@ cold\n@ exits 0\n";
        std::ofstream(folder_ / "bad.transcript") << "# Ends badly.\n@ cold\n@ exits 1\n";
        std::ofstream(folder_ / "broken.transcript") << "# Says nothing.\n> PRIME\n";
    }

    struct Run {
        std::string status;
        std::string output;
        std::string errors;
    };

    Run run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--worker", "/usr/bin/true"});
        const fs::path errors = folder_ / "stderr";
        fs::remove(errors);
        const auto child = start({TRANSCRIPTS_COMMAND, arguments, {}, errors});
        Run run;
        while (const auto line = child->next_line(host::after(patience))) {
            run.output += line->text + "\n";
        }
        run.status = describe(*child->await_exit(host::after(patience)));
        std::ifstream stream(errors);
        run.errors.assign(std::istreambuf_iterator<char>(stream), {});
        return run;
    }

    std::string file(const std::string& name) {
        return folder_ / (name + ".transcript");
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
};

TEST_F(TranscriptsCommand, StatusTellsWhetherAllPassed) {
    const Run good = run({file("good"), file("slow")});
    EXPECT_EQ(good.status, "status 0");
    EXPECT_NE(good.output.find("\n2 passed, 0 failed, 0 skipped\n"), std::string::npos)
        << good.output;
    const Run bad = run({folder_});
    EXPECT_EQ(bad.status, "status 1");
    EXPECT_NE(bad.output.find("\n2 passed, 2 failed, 0 skipped\n"), std::string::npos)
        << bad.output;
    EXPECT_NE(bad.output.find("FAILED  bad\n    " + file("bad") + ":3\n"), std::string::npos);
    EXPECT_NE(bad.output.find("broken.transcript:1: the transcript expects nothing"),
              std::string::npos);
}

TEST_F(TranscriptsCommand, RepeatsAndChooses) {
    EXPECT_NE(run({file("good"), "--repeat", "3"}).output.find("3 passed"), std::string::npos);
    EXPECT_NE(run({file("good"), file("slow"), "--only", "slow"}).output.find("1 passed"),
              std::string::npos);
    const Run quick = run({file("good"), file("slow"), "--only", "quick", "--list"});
    EXPECT_EQ(quick.output.substr(0, 5), "good ");
    EXPECT_EQ(quick.output.find("slow"), std::string::npos);
}

TEST_F(TranscriptsCommand, WrongArgumentsGetOneSentence) {
    const std::vector<std::vector<std::string>> wrong{
        {},
        {"/no/such/file"},
        {file("good"), "--jobs", "0"},
        {file("good"), "--jobs", "many"},
        {file("good"), "--repeat", "-1"},
        {file("good"), "--only", "some"},
        {file("good"), "--worker", "/no/such/worker"},
        {file("good"), "--unknown"},
        {file("good"), "--only", "slow"},
    };
    for (const auto& arguments : wrong) {
        const Run result = run(arguments);
        const std::string shown = arguments.empty() ? "" : arguments.back();
        EXPECT_EQ(result.status, "status 2") << shown;
        EXPECT_EQ(result.output, "") << shown;
        EXPECT_EQ(result.errors.substr(0, 13), "transcripts: ") << shown;
        EXPECT_EQ(result.errors.find('\n'), result.errors.size() - 1) << result.errors;
    }
}

}  // namespace
