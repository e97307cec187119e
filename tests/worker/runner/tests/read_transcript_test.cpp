// Reading transcripts: what their lines mean, and that nothing which proves nothing gets by.
#include "tests/worker/runner/reading/read_transcript.h"

#include <fstream>
#include <gtest/gtest.h>
#include <signal.h>

#include "tests/temporary_folder.h"

namespace {

using namespace transcript;
namespace fs = std::filesystem;
using std::chrono::milliseconds;

class ReadTranscript : public testing::Test {
  protected:
    fs::path write(const std::string& name, const std::string& text) {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(folder_ / name) << text;
        return folder_ / name;
    }

    Transcript read(const std::string& text) {
        std::string error;
        const auto transcript = read_transcript(write("a.transcript", text), error);
        EXPECT_EQ(error, "");
        return transcript.value_or(Transcript{});
    }

    // The error without the folder's name.
    std::string error_of(const std::string& text) {
        std::string error;
        EXPECT_FALSE(read_transcript(write("a.transcript", text), error));
        const std::string prefix = folder_.string() + "/";
        return error.starts_with(prefix) ? error.substr(prefix.size()) : error;
    }

    const TemporaryFolder made_;
    const fs::path folder_ = made_.path();
};

TEST_F(ReadTranscript, SceneAndDirectivesStandBeforeTheSteps) {
    const Transcript transcript = read(
        "# What it proves.\n"
        "# More about it.\n"
        "camera \"MODEL-A\" over USB, card in\n"
        "@ arguments \"{dir}\" x \"a b\"\n"
        "@ environment NAME=a=b\n"
        "@ cold\n"
        "next Connect answers 5\n"
        "\n"
        "> PRIME\n"
        "=\n");
    EXPECT_EQ(transcript.purpose, "What it proves.");
    EXPECT_EQ(transcript.scene, (std::vector<std::string>{"camera \"MODEL-A\" over USB, card in",
                                                          "next Connect answers 5"}));
    EXPECT_EQ(transcript.arguments, (std::vector<std::string>{"{dir}", "x", "a b"}));
    ASSERT_EQ(transcript.environment.size(), 1u);
    EXPECT_EQ(transcript.environment[0].second, "a=b");
    EXPECT_TRUE(transcript.cold);
    EXPECT_FALSE(transcript.slow || transcript.reads || transcript.no_adapter);
    EXPECT_EQ(transcript.steps.size(), 2u);
    EXPECT_EQ(transcript.steps[0].place.line, 9);
}

TEST_F(ReadTranscript, EveryKindOfStepIsUnderstood) {
    const Transcript transcript = read(
        "# x\n"
        ">\n"
        "> CONNECT|a  b \n"
        ">> \"raw\\r\\n\"\n"
        "< +700ms STATUS|x\n"
        "<< \"ends in a blank \"\n"
        "! card out\n"
        "= SetSaveInfo \"/a,b\" \"\" -1,\n"
        "  +400ms Release -> true\n"
        "@ close stdin\n"
        "@ close stdout\n"
        "@ signal TERM\n"
        "@ exits 1 within 3s after 1.5s\n"
        "=\n");
    const auto& steps = transcript.steps;
    ASSERT_EQ(steps.size(), 12u);
    EXPECT_EQ(std::get<Send>(steps[0].action).bytes, "\n");
    EXPECT_EQ(std::get<Send>(steps[1].action).bytes, "CONNECT|a  b \n");
    EXPECT_EQ(std::get<Send>(steps[2].action).bytes, "raw\r\n");
    EXPECT_EQ(std::get<Expect>(steps[3].action).text, "STATUS|x");
    EXPECT_EQ(std::get<Expect>(steps[3].action).not_before, milliseconds(700));
    EXPECT_EQ(std::get<Expect>(steps[4].action).text, "ends in a blank ");
    EXPECT_EQ(std::get<Control>(steps[5].action).line, "card out");
    const auto& calls = std::get<Calls>(steps[6].action).calls;
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].text, "SetSaveInfo \"/a,b\" \"\" -1");
    EXPECT_EQ(calls[1].text, "Release");
    EXPECT_EQ(calls[1].pause, milliseconds(400));
    EXPECT_EQ(calls[1].result, "true");
    EXPECT_TRUE(std::holds_alternative<CloseInput>(steps[7].action));
    EXPECT_TRUE(std::holds_alternative<CloseOutput>(steps[8].action));
    EXPECT_EQ(std::get<Signal>(steps[9].action).number, SIGTERM);
    const auto& exits = std::get<Exits>(steps[10].action);
    EXPECT_EQ(exits.status, 1);
    EXPECT_EQ(exits.within, milliseconds(3000));
    EXPECT_EQ(exits.not_before, milliseconds(1500));
    EXPECT_TRUE(std::get<Calls>(steps[11].action).calls.empty());
}

TEST_F(ReadTranscript, ABlockHasLanes) {
    const Transcript transcript = read("# x\n{\n< a\n< b\n|\n# aside\n<< \"c\"\n}\n");
    ASSERT_EQ(transcript.steps.size(), 1u);
    const auto& lanes = std::get<Block>(transcript.steps[0].action).lanes;
    ASSERT_EQ(lanes.size(), 2u);
    EXPECT_EQ(lanes[0].size(), 2u);
    EXPECT_EQ(lanes[1].at(0).text, "c");
}

TEST_F(ReadTranscript, QuotedTextOfSeveralLinesIsOneLane) {
    const Transcript transcript = read("# x\n<< \"line {n}\\n\" * 3\n");
    const auto& lanes = std::get<Block>(transcript.steps.at(0).action).lanes;
    ASSERT_EQ(lanes.size(), 1u);
    ASSERT_EQ(lanes[0].size(), 3u);
    EXPECT_EQ(lanes[0][2].text, "line 3");
}

TEST_F(ReadTranscript, StepsOfAnotherFileAreIncludedFromTheFoldersAbove) {
    write("shared.steps", "> CONNECT\n= Release\n");
    const fs::path file =
        write("inner/deep/b.transcript", "# x\n@ reads\n@ include shared.steps\n= Release\n");
    std::string error;
    const auto transcript = read_transcript(file, error);
    ASSERT_TRUE(transcript) << error;
    ASSERT_EQ(transcript->steps.size(), 3u);
    EXPECT_EQ(transcript->steps[0].place.file.filename(), "shared.steps");
    EXPECT_EQ(transcript->steps[0].place.line, 1);
    EXPECT_FALSE(std::get<Calls>(transcript->steps[1].action).with_reads);
    EXPECT_TRUE(std::get<Calls>(transcript->steps[2].action).with_reads);
    EXPECT_EQ(transcript->steps[2].place.line, 4);
}

TEST_F(ReadTranscript, ErrorsNameFileAndLine) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {"# x\n> a\n< b\ncard in\n", "a.transcript:4: unknown step \"card in\""},
        {"# x\n>a\n", "a.transcript:2: unknown step \">a\""},
        {"# x\n>> raw\n", "a.transcript:2: >> wants quoted text"},
        {"# x\n<< raw\n", "a.transcript:2: << wants quoted text"},
        {"# x\n!\n", "a.transcript:2: unknown step \"!\""},
        {"# x\n= Shoot 1\n", "a.transcript:2: \"Shoot 1\" is no call of the SDK"},
        {"# x\n= Release,\n", "a.transcript:2: the list of calls ends with a comma"},
        {"# x\n= ReleaseEnumeration\n", "a.transcript:2: reads are shown only with \"@ reads\""},
        {"# x\n= Release, \n", "a.transcript:2: \"\" is no call of the SDK"},
        {"# x\n{\n< a\n", "a.transcript:3: the block is not closed by a }"},
        {"# x\n{\n|\n< a\n}\n", "a.transcript:3: a lane without a line"},
        {"# x\n{\n> a\n}\n", "a.transcript:3: a block holds lines of output only"},
        {"# x\n< a\n}\n", "a.transcript:3: unknown step \"}\""},
        {"# x\n@ loud\n< a\n", "a.transcript:2: unknown step \"@ loud\""},
        {"# x\n@ arguments \"a\n< a\n",
         "a.transcript:2: @ arguments wants words, quoted where they hold blanks"},
        {"# x\n@ environment A\n< a\n", "a.transcript:2: @ environment wants NAME=VALUE"},
        {"# x\n< a\n@ cold\n", "a.transcript:3: directives stand before the first step"},
        {"# x\n@ signal KILL\n", "a.transcript:2: @ signal wants TERM, INT or HUP"},
        {"# x\n@ exits\n",
         "a.transcript:2: @ exits wants a status, then perhaps \"within T\" and \"after T\""},
        {"# x\n@ exits 0 within\n",
         "a.transcript:2: @ exits wants a status, then perhaps \"within T\" and \"after T\""},
        {"# x\n@ exits 0\n> a\n", "a.transcript:3: only calls can follow the end of the worker"},
        {"# x\n@ include no.steps\n",
         "a.transcript:2: there is no no.steps in this folder or above it"},
        {"# x\n@ include a.transcript\n", "a.transcript:2: a.transcript includes itself"},
        {"> a\n< b\n", "a.transcript:1: a transcript opens with a sentence on what it proves"},
        {"# x\n> PRIME\n! card out\n",
         "a.transcript:1: the transcript expects nothing, so it proves nothing"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(error_of(one.text), one.error) << one.text;
    }
}

TEST_F(ReadTranscript, AFileThatIsNotThereIsAnError) {
    std::string error;
    EXPECT_FALSE(read_transcript(folder_ / "none.transcript", error));
    EXPECT_NE(error.find("cannot read"), std::string::npos) << error;
}

}  // namespace
