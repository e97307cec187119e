// What the command line takes, and what it refuses with one sentence.
#include <signal.h>
#include <tuple>

#include "tests/tether/command_test.h"

namespace {

using OptionsTest = CommandTest;

TEST_F(OptionsTest, NumbersOutsideOfTheirRangeAreRefused) {
    const std::vector<std::tuple<std::string, std::string, std::vector<std::string>>> options{
        {"--shots", "1 to 1000000", {"0", "1000001", "1.5", "3.0"}},
        {"--every", "0 to 86400", {"86400.1", "86401"}},
        {"--patience", "0.1 to 3600", {"0", "0.09", "3600.1"}},
    };
    for (const auto& [option, range, own] : options) {
        std::vector<std::string> numbers{"nan",
                                         "inf",
                                         "-inf",
                                         "infinity",
                                         "-1",
                                         "-0.5",
                                         "1e10",
                                         "1e1",
                                         "1e400",
                                         "0x10",
                                         "0x1p3",
                                         "+1",
                                         " 1",
                                         "1 ",
                                         "1,5",
                                         "1_0",
                                         "1'0",
                                         "1.2.3",
                                         ".",
                                         "few",
                                         "99999999999999999999",
                                         std::string(5000, '9')};
        numbers.insert(numbers.end(), own.begin(), own.end());
        for (const std::string& number : numbers) {
            std::string argument = option;
            argument.append("=").append(number);
            std::string sentence = "tether: ";
            sentence.append(option).append(": needs a number from ").append(range);
            sentence.append(", not ").append(number).append("\n");
            EXPECT_EQ(refusal_of({argument}), sentence);
        }
    }
}

TEST_F(OptionsTest, NumbersAtTheEndsOfTheirRangeAreTaken) {
    const std::vector<std::vector<std::string>> good{
        {"--shots", "1"},      {"--shots", "1000000"}, {"--shots", "010"},
        {"--every", "0"},      {"--every", "86400"},   {"--every", "0.25"},
        {"--patience", "0.1"}, {"--patience", "3600"}, {"--patience", "1.5"},
    };
    for (const auto& arguments : good) {
        std::vector<std::string> all{"--worker", "/no/such/worker"};
        all.insert(all.begin(), arguments.begin(), arguments.end());
        EXPECT_EQ(refusal_of(all), "tether: --worker: File does not exist: /no/such/worker\n")
            << arguments[0] << arguments[1];
    }
}

TEST_F(OptionsTest, AFolderWithoutPicturesIsRefusedBeforeAnyShot) {
    fs::create_directories(folder_ / "empty");
    write("empty/.a.jpg", "hidden");
    write("empty/a.txt", "no picture");
    for (const char* command : {"shoot", "watch", "serve"}) {
        EXPECT_EQ(refusal_of({command, "--pictures", folder_ / "empty"}),
                  "tether: --pictures: there is no JPEG in " + (folder_ / "empty").string() + "\n");
    }
}

TEST_F(OptionsTest, TheWorkerIsTheOneOfTheVariableWhenNoneIsNamed) {
    const fs::path bundle = folder_ / "elsewhere";
    fs::create_directories(bundle / "Contents/MacOS");
    const fs::path worker = bundle / "Contents/MacOS/sony-worker";
    const auto said = [&](const std::vector<std::string>& arguments) {
        fs::remove(folder_ / "errors");
        const auto command = start(
            {TETHER_COMMAND, arguments, {{"TETHER_WORKER", worker.string()}}, folder_ / "errors"});
        std::string output;
        while (const auto line = command->next_line(host::after(patience))) {
            output += line->text + "\n";
        }
        EXPECT_TRUE(command->await_exit(host::after(patience)));
        return output + read("errors");
    };
    EXPECT_EQ(said({}), "tether: there is no worker at " + worker.string() + "\n");
    EXPECT_EQ(said({"shoot"}), "tether: there is no worker at " + worker.string() + "\n");
    EXPECT_EQ(said({"--worker", "/no/such/worker"}),
              "tether: --worker: File does not exist: /no/such/worker\n");
    const std::string examined = said({"doctor"});
    EXPECT_NE(examined.find(bundle.string()), std::string::npos) << examined;
}

TEST_F(OptionsTest, ANumberWithALeadingZeroIsDecimal) {
    start_tether({"--shots", "010"});
    read_to("shot 1 of 10 on its way");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 1");
}

TEST_F(OptionsTest, TheHelpSaysTheRanges) {
    start_tether({"--help"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("--shots NUMBER from 1 to 1000000")) << output_;
    EXPECT_TRUE(printed("--every SECONDS from 0 to 86400")) << output_;
    EXPECT_TRUE(printed("--wait SECONDS from 1 to 86400")) << output_;
    EXPECT_TRUE(printed("--patience SECONDS from 0.1 to 3600")) << output_;
    EXPECT_TRUE(printed("something in it is refused")) << output_;
}

TEST_F(OptionsTest, TheHelpOfEveryCommandFitsEightyColumnsAndShowsAnExample) {
    for (const std::string name :
         {"", "shoot", "watch", "serve", "tap", "replay", "explain", "doctor"}) {
        std::vector<std::string> arguments{"--help"};
        if (!name.empty()) {
            arguments.insert(arguments.begin(), name);
        }
        tether_ = start({TETHER_COMMAND, arguments, {}, folder_ / "errors"});
        output_.clear();
        EXPECT_EQ(status(), "status 0");
        EXPECT_TRUE(printed("Example:\n  ")) << output_;
        for (std::size_t at = 0; at < output_.size();) {
            const std::size_t end = output_.find('\n', at);
            EXPECT_LE(end - at, 80u) << output_.substr(at, end - at);
            at = end + 1;
        }
    }
}

TEST_F(OptionsTest, TheUsageNamesWhatFollowsTheOptions) {
    const std::vector<std::pair<std::string, std::string>> usages{
        {"tap", "Usage: tether tap [OPTIONS] WORKER [ARGUMENTS]\n\nOptions:"},
        {"replay", "Usage: tether replay [OPTIONS] RECORD\n\nOptions:"},
        {"doctor", "Usage: tether doctor [OPTIONS] [bundle]\n\n"},
    };
    for (const auto& [command, usage] : usages) {
        tether_ = start({TETHER_COMMAND, {command, "--help"}, {}, folder_ / "errors"});
        output_.clear();
        EXPECT_EQ(status(), "status 0");
        EXPECT_TRUE(printed(usage)) << output_;
    }
}

TEST_F(OptionsTest, TheVersionIsTold) {
    tether_ = start({TETHER_COMMAND, {"--version"}, {}, folder_ / "errors"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(output_.starts_with("tether 1.")) << output_;
}

// Of a name that there is not, the nearest; of an option that would count for nothing, its place.
TEST_F(OptionsTest, AWrongOptionIsAnsweredByWhatIsRight) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> calls{
        {{"--shts", "3"}, "there is no option --shts; the nearest is --shots"},
        {{"--shts=3"}, "there is no option --shts; the nearest is --shots"},
        {{"watch", "--foldr", "x"}, "there is no option --foldr; the nearest is --folder"},
        {{"tap", "--recrod", "x", "y"}, "there is no option --recrod; the nearest is --record"},
        {{"replay", "--quick", "x"}, "there is no option --quick; the nearest is --strict"},
        {{"wach"}, "there is no command wach; the nearest is watch"},
        {{"--folder", "x", "watch"}, "--folder stands before \"watch\": write it behind"},
        {{"--folder", "x", "serve"}, "--folder stands before \"serve\": write it behind"},
        {{"--interactive", "watch"}, "--interactive stands before \"watch\": write it behind"},
        {{"replay", "x", "--fast"}, "--fast stands behind the record: write it before"},
        {{"replay", "x", "y", "--run=2"}, "--run=2 stands behind the record: write it before"},
    };
    for (const auto& [arguments, sentence] : calls) {
        EXPECT_EQ(refusal_of(arguments), "tether: " + sentence + "\n");
    }
}

TEST_F(OptionsTest, ASeparatorStandsBeforeTheTappedProgramAndNotAmongItsArguments) {
    const std::string record = folder_ / "record";
    for (const auto& [arguments, said] :
         std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"tap", "--record", record + "1", "--", "/bin/echo", "-n", "hi"}, "hi (unfinished)"},
             {{"tap", "--record=" + record + "2", "/bin/echo", "--", "hi"}, "-- hi"}}) {
        tether_ = start({TETHER_COMMAND, arguments, {}, folder_ / "errors"});
        EXPECT_EQ(next_text(*tether_), said);
        EXPECT_EQ(status(), "status 0");
    }
}

TEST_F(OptionsTest, WrongArgumentsGetOneSentence) {
    write("file", "");
    const std::vector<std::vector<std::string>> wrong{
        {"--worker", "/no/such/worker"},
        {"--shots", "0"},
        {"--shots", "few"},
        {"--every", "-1"},
        {"--patience", "0"},
        {"--file-type", "heif"},
        {"--save-dest", "cloud"},
        {"--scene", "/no/such/scene"},
        {"--pictures", folder_ / "file"},
        {"--folder", folder_ / "file/inside"},
        {"--folder", folder_ / "file"},
        {"--record", folder_ / "no/such/record"},
        {"--redact"},
        {"--record", folder_},
        {"--record", folder_ / "own/a.jpg"},
        {"doctor", "/no/such/bundle"},
        {"doctor", "--shots"},
        {"surplus"},
    };
    for (const auto& arguments : wrong) {
        const std::string sentence = refusal_of(arguments);
        EXPECT_EQ(sentence.substr(0, 8), "tether: ") << arguments.front();
        EXPECT_EQ(sentence.find('\n'), sentence.size() - 1) << sentence;
    }
}

TEST_F(OptionsTest, ARecordReplacesNoFile) {
    start_tether({"--record", folder_ / "own/a.jpg"});
    EXPECT_EQ(status(), "status 2");
    EXPECT_EQ(read("stderr"), "tether: cannot write " + (folder_ / "own/a.jpg").string() +
                                  ": it is not empty, and a record replaces nothing\n");
    EXPECT_EQ(read("own/a.jpg"), jpeg("first picture"));
}

}  // namespace
