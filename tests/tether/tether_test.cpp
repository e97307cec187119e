// The tether command against the worker and the virtual camera.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <signal.h>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <sys/stat.h>
#include <tuple>
#include <utility>
#include <vector>

#include "simulator/control/client.h"
#include "tests/host/child.h"

namespace {

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

class TetherTest : public testing::Test {
  protected:
    TetherTest() {
        char pattern[] = "/tmp/tether-test-XXXXXX";
        folder_ = fs::canonical(mkdtemp(pattern));
        write("scene", "timing instant\ncamera \"MODEL-A\" over USB, card in\n");
        // What the virtual camera shoots need not be pictures; drawing them would only take time.
        write("own/a.jpg", "first picture");
        write("own/b.jpg", "the second one");
    }
    ~TetherTest() override {
        tether_.reset();
        fs::remove_all(folder_);
    }

    void write(const std::string& name, const std::string& text) {
        fs::create_directories((folder_ / name).parent_path());
        std::ofstream(folder_ / name) << text;
    }

    std::string read(const std::string& name) {
        std::ifstream stream(folder_ / name);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void start_tether(std::vector<std::string> arguments) {
        output_.clear();
        const std::vector<std::string> usual{"--folder",        folder_ / "shots", "--scene",
                                             folder_ / "scene", "--pictures",      folder_ / "own"};
        arguments.insert(arguments.begin(), usual.begin(), usual.end());
        tether_ = start({TETHER_COMMAND,
                         arguments,
                         {{"CAMERA_SIM_CONTROL", folder_ / "control"},
                          {"CAMERA_SIM_JOURNAL", folder_ / "journal"}},
                         folder_ / "stderr"});
    }

    // Reads on to a line that holds the text.
    void read_to(const std::string& text) {
        while (const auto line = tether_->next_line(host::after(patience))) {
            output_ += line->text + "\n";
            if (line->text.find(text) != std::string::npos) {
                return;
            }
        }
        ADD_FAILURE() << "\"" << text << "\" did not come:\n" << output_ << read("stderr");
    }

    std::string status() {
        while (const auto line = tether_->next_line(host::after(patience))) {
            output_ += line->text + "\n";
        }
        const auto exit = tether_->await_exit(host::after(patience));
        return exit ? describe(*exit) : "still running";
    }

    void tell_camera(const std::string& line) {
        auto control = camera_sim::ControlClient::connect(folder_ / "control");
        ASSERT_TRUE(control);
        const auto reply = control->ask(line);
        ASSERT_TRUE(reply && reply->ok) << line << ": " << (reply ? reply->error : "no answer");
    }

    static void expect_in_order(const std::string& text, const std::vector<std::string>& parts) {
        std::size_t at = 0;
        for (const std::string& part : parts) {
            const std::size_t found = text.find(part, at);
            EXPECT_NE(found, std::string::npos) << "\"" << part << "\" does not follow in\n"
                                                << text;
            at = found == std::string::npos ? at : found + part.size();
        }
    }

    bool printed(const std::string& text) {
        return output_.find(text) != std::string::npos;
    }

    fs::path folder_;
    Child tether_;
    std::string output_;
};

TEST_F(TetherTest, ShotsArriveAndAreSummedUp) {
    start_tether({"--shots", "3"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" > CONNECT|disk\n"));
    EXPECT_TRUE(printed(" < CONNECTED|MODEL-A\n"));
    EXPECT_TRUE(printed("         · shot 2 of 3 on its way\n"));
    EXPECT_TRUE(printed(" < DOWNLOADED|" + (folder_ / "shots/DSC00003.JPG").string() + "\n"));
    EXPECT_TRUE(printed("\n  DSC00002.JPG       14 B  ")) << output_;
    EXPECT_TRUE(printed("\n3 shots, 3 files, 40 B in " + (folder_ / "shots").string() +
                        "; nothing lost.\nFrom shutter to file 0."))
        << output_;
    EXPECT_EQ(read("shots/DSC00001.JPG"), "first picture");
    EXPECT_EQ(read("shots/DSC00002.JPG"), "the second one");
    EXPECT_EQ(output_.find('\x1b'), std::string::npos) << "colours belong on a terminal only";
}

TEST_F(TetherTest, ARawPairIsAwaitedWhole) {
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

TEST_F(TetherTest, ShotsForTheCardStayThere) {
    start_tether({"--shots", "2", "--save-dest", "card"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("\n2 shots, 0 files, 0 B in ")) << output_;
}

TEST_F(TetherTest, AShotThatBringsNoPictureIsSaidSo) {
    write("scene", "timing instant\nevery SendCommand answers 0x8402\n");
    start_tether({"--shots", "1", "--patience", "1"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("1 shot, 0 files, 0 B in " + (folder_ / "shots").string() +
                        "; 1 shot lost.\n! shot 1 of 1 brought no picture in time\n"))
        << output_;
}

TEST_F(TetherTest, AFileOutsideOfTheFolderIsNotAccepted) {
    write("elsewhere.JPG", "private");
    start_tether({"--shots", "2", "--every", "3"});
    read_to("DOWNLOADED|");
    tell_camera("deliver \"" + (folder_ / "elsewhere.JPG").string() + "\" 0xFFFFFFFF");
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    EXPECT_TRUE(printed("! not accepted: " + (folder_ / "elsewhere.JPG").string() +
                        " (it lies outside of the folder)\n"))
        << output_;
}

TEST_F(TetherTest, ALostCameraIsConnectedAgain) {
    start_tether({"--shots", "2", "--every", "4"});
    read_to("DOWNLOADED|");
    tell_camera("unplug");
    read_to("no camera; trying again");
    tell_camera("plug");
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    EXPECT_TRUE(printed("\nThe camera went away once.\n")) << output_;
}

TEST_F(TetherTest, AWorkerThatDiesIsSaidSo) {
    write("dying", "#!/bin/sh\necho 'READY|OK'\nread line\nkill -9 $$\n");
    fs::permissions(folder_ / "dying", fs::perms::owner_all);
    start_tether({"--worker", folder_ / "dying"});
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("! the worker went away\n! the worker ended with signal 9\n")) << output_;
}

// Ctrl-C and Ctrl-D would be all that a user can do about it.
TEST_F(TetherTest, AProcessThatTheWorkerLeavesBehindHoldsNobodyUp) {
    write("parent", "#!/bin/sh\necho 'READY|OK'\nsleep 1000 &\necho $! >" +
                        (folder_ / "left").string() + "\nread line\nexit 0\n");
    fs::permissions(folder_ / "parent", fs::perms::owner_all);
    for (const char* mode : {"--interactive", "--redact"}) {
        const auto command = start({TETHER_COMMAND,
                                    {mode, "--record", folder_ / ("record" + std::string(mode)),
                                     "--folder", folder_ / "shots", "--worker", folder_ / "parent"},
                                    {},
                                    folder_ / "errors"});
        command->send("QUIT");
        const auto exit = command->await_exit(host::after(patience));
        ASSERT_TRUE(exit) << mode;
        EXPECT_EQ(kill(std::stoi(read("left")), SIGKILL), 0) << "it must have outlived tether";
    }
}

TEST_F(TetherTest, AnInterruptEndsTheWorkerInOrder) {
    start_tether({"--shots", "100"});
    read_to("DOWNLOADED|");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("! interrupted\n")) << output_;
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

TEST_F(TetherTest, TheTerminalIsConnectedToTheWorker) {
    start_tether({"--interactive"});
    read_to("READY|OK");
    tether_->send("CONNECT");
    read_to("FILE_TYPE|");
    tether_->send("CAPTURE");
    read_to("DOWNLOADED|" + (folder_ / "shots/DSC00001.JPG").string());
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" > CAPTURE\n"));
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

TEST_F(TetherTest, TheEndOfTypingLetsTheWorkerFinish) {
    start_tether({"--interactive"});
    tether_->send_bytes("PRIME\nno line feed");
    tether_->close_input();
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed(" < PRIME_DONE|OK\n")) << output_;
    EXPECT_TRUE(printed(" < ERROR|Unknown command: no line feed\n")) << output_;
}

TEST_F(TetherTest, AnInterruptEndsTheTerminalsConnection) {
    start_tether({"--interactive"});
    read_to("READY|OK");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 0");
    EXPECT_NE(read("journal").find("\tRelease\ttrue\n"), std::string::npos);
}

TEST_F(TetherTest, TheRecordHoldsBothDirectionsToTheEnd) {
    start_tether({"--shots", "1", "--record", folder_ / "record"});
    EXPECT_EQ(status(), "status 0");
    expect_in_order(read("record"),
                    {" # 20", " < CPP_WORKER|START sony-1.0\n", " > CONNECT|disk\n", " > CAPTURE\n",
                     " < DOWNLOADED|" + (folder_ / "shots/DSC00001.JPG").string() + "\n",
                     " > QUIT\n", " # the worker ended in order\n"});
    EXPECT_TRUE(printed(" > QUIT\n")) << output_;
}

TEST_F(TetherTest, TheTerminalsConversationIsRecordedToo) {
    start_tether({"--interactive", "--record", folder_ / "record", "--redact"});
    tether_->send("CONNECT");
    tether_->send("set_download_dir|" + (folder_ / "own").string());
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    const std::string record = read("record");
    expect_in_order(record, {" > CONNECT\n", " > set_download_dir|<folder>\n", " > QUIT\n",
                             " # the worker ended in order\n"});
    EXPECT_EQ(record.find(folder_), std::string::npos) << record;
    EXPECT_EQ(record.find(" > QUIT\n"), record.rfind(" > QUIT\n")) << record;
}

TEST_F(TetherTest, AnInterruptIsRecorded) {
    for (const char* mode : {"--interactive", "--redact"}) {
        fs::remove(folder_ / "record");
        start_tether({mode, "--shots", "100", "--record", folder_ / "record"});
        read_to("READY|OK");
        tether_->signal(SIGINT);
        status();
        expect_in_order(read("record"), {" < READY|OK\n", " # interrupted\n", " > QUIT\n",
                                         " # the worker ended in order\n"});
    }
}

TEST_F(TetherTest, TheRecordTellsHowAWorkerDied) {
    write("dying", "#!/bin/sh\necho 'READY|OK'\nread line\necho 'STATUS|last words'\nkill -9 $$\n");
    fs::permissions(folder_ / "dying", fs::perms::owner_all);
    for (const char* mode : {"--interactive", "--redact"}) {
        fs::remove(folder_ / "record");
        start_tether({mode, "--worker", folder_ / "dying", "--record", folder_ / "record"});
        read_to("READY|OK");
        tether_->send("CONNECT");
        EXPECT_EQ(status(), "status 1");
        const std::string record = read("record");
        expect_in_order(record, {" < STATUS|last words\n", " # the worker ended with signal 9\n"});
        EXPECT_EQ(record.find("QUIT"), std::string::npos) << record;
    }
}

TEST_F(TetherTest, TheRecordTellsWhatTheWorkerDidNotTake) {
    write("deaf", "#!/bin/sh\nexec <&-\necho 'STATUS|deaf'\nuntil [ -e " +
                      (folder_ / "heard").string() + " ]; do :; done\n");
    fs::permissions(folder_ / "deaf", fs::perms::owner_all);
    start_tether({"--interactive", "--worker", folder_ / "deaf", "--record", folder_ / "record"});
    read_to("STATUS|deaf");
    tether_->send("CONNECT");
    tether_->send("CAPTURE");
    read_to(" > CAPTURE");
    write("heard", "");
    EXPECT_EQ(status(), "status 0");
    expect_in_order(read("record"), {" > CONNECT\n", " # the worker did not take this line\n"});
}

TEST_F(TetherTest, NoQuitIsRecordedThatCannotBeSent) {
    write("staying",
          "#!/bin/sh\nwhile read line; do :; done\necho 'STATUS|end of input'\n"
          "while :; do :; done\n");
    fs::permissions(folder_ / "staying", fs::perms::owner_all);
    start_tether(
        {"--interactive", "--worker", folder_ / "staying", "--record", folder_ / "record"});
    tether_->close_input();
    read_to("STATUS|end of input");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 1");
    const std::string record = read("record");
    expect_in_order(record, {" # interrupted\n", " # the worker had to be ended with SIGTERM\n"});
    EXPECT_EQ(record.find("QUIT"), std::string::npos) << record;
}

TEST_F(TetherTest, EachLineIsRecordedAtOnce) {
    write("silent", "#!/bin/sh\necho 'READY|OK'\nwhile read line; do :; done\n");
    fs::permissions(folder_ / "silent", fs::perms::owner_all);
    ASSERT_EQ(mkfifo((folder_ / "record").c_str(), 0600), 0);
    start_tether({"--worker", folder_ / "silent", "--record", folder_ / "record"});
    std::ifstream record(folder_ / "record");
    std::string line;
    for (const char* expected :
         {" # 20", " < READY|OK", " > SET_DOWNLOAD_DIR|", " > CONNECT|disk"}) {
        ASSERT_TRUE(std::getline(record, line));
        EXPECT_NE(line.find(expected), std::string::npos) << line;
    }
}

TEST_F(TetherTest, ARecordThatEndsEarlyIsSaidSoAndCostsNoPicture) {
    ASSERT_EQ(mkfifo((folder_ / "record").c_str(), 0600), 0);
    start_tether({"--shots", "2", "--record", folder_ / "record"});
    std::ifstream(folder_ / "record").get();
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("tether: the record ends here: Broken pipe\n")) << output_;
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    EXPECT_TRUE(printed("\n! the record is not complete: Broken pipe\n")) << output_;
}

TEST_F(TetherTest, ARedactedRecordHoldsNoPathsAndNames) {
    start_tether({"--shots", "1", "--record", folder_ / "record", "--redact"});
    EXPECT_EQ(status(), "status 0");
    const std::string record = read("record");
    EXPECT_NE(record.find(" < DOWNLOADED|<folder>/<file 1>.JPG\n"), std::string::npos) << record;
    for (const char* name : {"/tmp", "MODEL-A", "DSC00001"}) {
        EXPECT_EQ(record.find(name), std::string::npos) << record;
        EXPECT_TRUE(printed(name)) << "the screen shows everything";
    }
}

TEST_F(TetherTest, ARecordReplacesNoFile) {
    start_tether({"--record", folder_ / "own/a.jpg"});
    EXPECT_EQ(status(), "status 2");
    EXPECT_EQ(read("stderr"), "tether: cannot write " + (folder_ / "own/a.jpg").string() +
                                  ": it is not empty, and a record replaces nothing\n");
    EXPECT_EQ(read("own/a.jpg"), "first picture");
}

// Started with one of its standard streams closed, as programs that run at night are.
TEST_F(TetherTest, AClosedStandardStreamPutsNothingForeignIntoTheRecord) {
    for (const char* closed : {"<&-", ">&-", "2>&-", "<&- >&- 2>&-"}) {
        fs::remove(folder_ / "record");
        const auto command =
            start({"/bin/sh",
                   {"-c", "exec \"$@\" " + std::string(closed), "sh", TETHER_COMMAND, "--folder",
                    folder_ / "shots", "--scene", folder_ / "scene", "--pictures", folder_ / "own",
                    "--shots", "1", "--record", folder_ / "record"},
                   {},
                   folder_ / "stderr"});
        const auto exit = command->await_exit(host::after(patience));
        ASSERT_TRUE(exit);
        EXPECT_EQ(describe(*exit), "status 0") << closed;
        std::istringstream record(read("record"));
        int lines = 0;
        for (std::string line; std::getline(record, line); ++lines) {
            ASSERT_GT(line.size(), 11u) << closed << ": " << line;
            EXPECT_EQ(line.substr(0, 8).find_first_not_of(" .0123456789"), std::string::npos)
                << closed << ": " << line;
            EXPECT_NE(std::string("#<>").find(line[9]), std::string::npos)
                << closed << ": " << line;
        }
        EXPECT_GT(lines, 10) << closed;
    }
}

TEST_F(TetherTest, AFloodOfTheWorkerIsSaidSoAndTakesNoMemory) {
    const std::string too_long = "the worker wrote a line of more than 65,536 bytes and was ended";
    const std::string too_many =
        "the worker wrote faster than its lines were taken and was ended with more than 8,388,608 "
        "bytes waiting";
    const std::vector<std::pair<std::string, std::string>> floods{
        {"exec yes", too_many},
        {"exec cat /dev/zero", too_long},
        {"echo 'CPP_WORKER|START sony-1.0'; exec yes 'LOG|[SONY] and so on'", too_many},
        {"echo 'CPP_WORKER|START sony-1.0'; echo 'READY|OK'; exec cat /dev/zero", too_long},
    };
    for (const auto& [script, sentence] : floods) {
        for (const char* mode : {"--interactive", "--redact"}) {
            write("flooding", "#!/bin/sh\n" + script + "\n");
            fs::permissions(folder_ / "flooding", fs::perms::owner_all);
            fs::remove(folder_ / "record");
            // A sanitizer needs far more addresses than that.
            const std::string limit = sanitized ? "" : "ulimit -v 524288; ";
            tether_ = start({"/bin/sh",
                             {"-c", limit + "\"$@\" > " + (folder_ / "output").string(), "sh",
                              TETHER_COMMAND, mode, "--folder", folder_ / "shots", "--worker",
                              folder_ / "flooding", "--record", folder_ / "record"},
                             {},
                             {}});
            EXPECT_EQ(status(), "status 1") << script << mode;
            const std::string output = read("output");
            EXPECT_NE(output.find(sentence + "\n"), std::string::npos)
                << script << mode << ": " << output.substr(output.size() - 500);
            EXPECT_NE(read("record").find(" # " + sentence + "\n"), std::string::npos)
                << script << mode;
            // What waits behind it is not shown.
            EXPECT_LT(fs::file_size(folder_ / "output"), 8u << 20) << script << mode;
        }
    }
}

TEST_F(TetherTest, AFolderThatTheWorkerWouldCutIsRefused) {
    fs::path folder = folder_ / "shots";
    for (int level = 0; level < 6; ++level) {
        folder /= std::string(250, '%');
    }
    const auto command = start({TETHER_COMMAND, {"--folder", folder}, {}, folder_ / "errors"});
    EXPECT_EQ(describe(*command->await_exit(host::after(patience))), "status 2");
    const std::size_t bytes = std::string("SET_DOWNLOAD_DIR|").size() +
                              (folder_ / "shots").string().size() + std::size_t{6} * 751;
    EXPECT_EQ(read("errors"), "tether: the folder " + folder.string() +
                                  " cannot be named to the worker: the command has " +
                                  std::to_string(bytes) +
                                  " bytes, and the worker takes at most 4095\n");
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(TetherTest, ATypedLineThatIsNoCommandIsRefusedAloud) {
    start_tether({"--interactive", "--record", folder_ / "record"});
    read_to("READY|OK");
    tether_->send_bytes(std::string(100'000, 'x') + "\nPRI\rME\nPRIME\r\n");
    read_to("tether: the command has 4159 bytes, and the worker takes at most 4095");
    read_to("tether: the command has a carriage return in it, which the worker may drop");
    read_to(" < PRIME_DONE|OK");
    tether_->send("QUIT");
    EXPECT_EQ(status(), "status 0");
    EXPECT_FALSE(printed("Unknown command")) << output_;
    expect_in_order(read("record"), {" # the command has 4159 bytes", " # the command has a carr",
                                     " > PRIME\n", " < PRIME_DONE|OK\n"});
}

TEST_F(TetherTest, NumbersOutsideOfTheirRangeAreRefused) {
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
            fs::remove(folder_ / "errors");
            std::string argument = option;
            argument.append("=").append(number);
            const auto command = start({TETHER_COMMAND, {argument}, {}, folder_ / "errors"});
            EXPECT_EQ(describe(*command->await_exit(host::after(patience))), "status 2");
            std::string sentence = "tether: ";
            sentence.append(option).append(": needs a number from ").append(range);
            sentence.append(", not ").append(number).append("\n");
            EXPECT_EQ(read("errors"), sentence);
        }
    }
}

TEST_F(TetherTest, NumbersAtTheEndsOfTheirRangeAreTaken) {
    const std::vector<std::vector<std::string>> good{
        {"--shots", "1"},      {"--shots", "1000000"}, {"--shots", "010"},
        {"--every", "0"},      {"--every", "86400"},   {"--every", "0.25"},
        {"--patience", "0.1"}, {"--patience", "3600"}, {"--patience", "1.5"},
    };
    for (const auto& arguments : good) {
        fs::remove(folder_ / "errors");
        std::vector<std::string> all{"--worker", "/no/such/worker"};
        all.insert(all.begin(), arguments.begin(), arguments.end());
        const auto command = start({TETHER_COMMAND, all, {}, folder_ / "errors"});
        EXPECT_EQ(describe(*command->await_exit(host::after(patience))), "status 2");
        EXPECT_EQ(read("errors"), "tether: --worker: File does not exist: /no/such/worker\n")
            << arguments[0] << arguments[1];
    }
}

TEST_F(TetherTest, ANumberWithALeadingZeroIsDecimal) {
    start_tether({"--shots", "010"});
    read_to("shot 1 of 10 on its way");
    tether_->signal(SIGINT);
    EXPECT_EQ(status(), "status 1");
}

TEST_F(TetherTest, TheHelpSaysTheRanges) {
    start_tether({"--help"});
    EXPECT_EQ(status(), "status 0");
    EXPECT_TRUE(printed("--shots NUMBER from 1 to 1000000")) << output_;
    EXPECT_TRUE(printed("--every SECONDS from 0 to 86400")) << output_;
    EXPECT_TRUE(printed("--patience SECONDS from 0.1 to 3600")) << output_;
    EXPECT_TRUE(printed("one with something in it is refused")) << output_;
}

TEST_F(TetherTest, WrongArgumentsGetOneSentence) {
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
        const fs::path errors = folder_ / "errors";
        fs::remove(errors);
        const auto command = start({TETHER_COMMAND, arguments, {}, errors});
        EXPECT_EQ(next_text(*command), "(end of output)") << arguments.front();
        EXPECT_EQ(describe(*command->await_exit(host::after(patience))), "status 2")
            << arguments.front();
        const std::string sentence = read("errors");
        EXPECT_EQ(sentence.substr(0, 8), "tether: ") << arguments.front();
        EXPECT_EQ(sentence.find('\n'), sentence.size() - 1) << sentence;
    }
}

}  // namespace
