// The record of a shoot.
#include <fcntl.h>
#include <fstream>
#include <signal.h>
#include <sstream>
#include <sys/stat.h>

#include "tests/tether/command_test.h"

namespace {

using ShootRecordTest = CommandTest;

TEST_F(ShootRecordTest, TheRecordHoldsBothDirectionsToTheEnd) {
    start_tether({"--shots", "1", "--record", folder_ / "record"});
    EXPECT_EQ(status(), "status 0");
    expect_in_order(read("record"),
                    {" # 20", " < CPP_WORKER|START sony-1.0\n", " > CONNECT\n", " > CAPTURE\n",
                     "/DSC00001.JPG\n", " > QUIT\n", " # the worker ended in order\n"});
    EXPECT_TRUE(printed(" > QUIT\n")) << output_;
}

TEST_F(ShootRecordTest, AnInterruptIsRecorded) {
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

TEST_F(ShootRecordTest, TheRecordTellsHowAWorkerDied) {
    const std::string dying = script("dying", R"(
echo 'CPP_WORKER|START sony-1.0'
echo 'READY|OK'
read line
echo 'STATUS|last words'
kill -9 $$
)");
    for (const char* mode : {"--interactive", "--redact"}) {
        fs::remove(folder_ / "record");
        start_tether({mode, "--worker", dying, "--record", folder_ / "record"});
        read_to("READY|OK");
        tether_->send("CONNECT");
        EXPECT_EQ(status(), "status 1");
        const std::string record = read("record");
        expect_in_order(record, {" < STATUS|last words\n", " # ", "signal 9"});
        EXPECT_EQ(record.find("QUIT"), std::string::npos) << record;
    }
}

TEST_F(ShootRecordTest, EachLineIsRecordedAtOnce) {
    write("silent",
          "#!/bin/sh\necho 'CPP_WORKER|START sony-1.0'\necho 'READY|OK'\nwhile read line; do :; "
          "done\n");
    fs::permissions(folder_ / "silent", fs::perms::owner_all);
    ASSERT_EQ(mkfifo((folder_ / "record").c_str(), 0600), 0);
    const host::Descriptor reader(::open((folder_ / "record").c_str(), O_RDWR | O_CLOEXEC));
    start_tether({"--worker", folder_ / "silent", "--record", folder_ / "record"});
    std::ifstream record(folder_ / "record");
    std::string line;
    for (const char* expected :
         {" # 20", " < CPP_WORKER|", " < READY|OK", " > SET_DOWNLOAD_DIR|", " > SET_SAVE_DEST|"}) {
        ASSERT_TRUE(std::getline(record, line));
        EXPECT_NE(line.find(expected), std::string::npos) << line;
    }
}

TEST_F(ShootRecordTest, ARecordThatEndsEarlyIsSaidSoAndCostsNoPicture) {
    ASSERT_EQ(mkfifo((folder_ / "record").c_str(), 0600), 0);
    host::Descriptor reader(::open((folder_ / "record").c_str(), O_RDWR | O_CLOEXEC));
    start_tether({"--shots", "2", "--record", folder_ / "record"});
    char first = 0;
    EXPECT_EQ(::read(reader.number(), &first, 1), 1);
    reader.close();
    EXPECT_EQ(status(), "status 1");
    EXPECT_TRUE(printed("tether: the record ends here: Broken pipe\n")) << output_;
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    EXPECT_TRUE(printed("\n! the record is not complete: Broken pipe\n")) << output_;
}

TEST_F(ShootRecordTest, APipeThatNobodyReadsIsRefusedByEveryCommand) {
    ASSERT_EQ(mkfifo((folder_ / "record").c_str(), 0600), 0);
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"tap", "--record", folder_ / "record", WORKER},
          {"serve", "--record", folder_ / "record"},
          {"shoot", "--record", folder_ / "record"}}) {
        EXPECT_EQ(refusal_of(command), "tether: cannot write " + (folder_ / "record").string() +
                                           ": nobody reads from it\n");
    }
}

TEST_F(ShootRecordTest, ARedactedRecordHoldsNoPathsAndNames) {
    start_tether({"--shots", "1", "--record", folder_ / "record", "--redact"});
    EXPECT_EQ(status(), "status 0");
    const std::string record = read("record");
    EXPECT_NE(record.find(" < DOWNLOADED|<folder>/<file 1>.JPG\n"), std::string::npos) << record;
    for (const char* name : {"/tmp", "MODEL-A", "DSC00001"}) {
        EXPECT_EQ(record.find(name), std::string::npos) << record;
        EXPECT_TRUE(printed(name)) << "the screen shows everything";
    }
}

TEST_F(ShootRecordTest, AClosedStandardStreamPutsNothingForeignIntoTheRecord) {
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
            EXPECT_NE(std::string("#<>!").find(line[9]), std::string::npos)
                << closed << ": " << line;
        }
        EXPECT_GT(lines, 10) << closed;
    }
}

TEST_F(ShootRecordTest, AFloodOfTheWorkerIsSaidSoAndTakesNoMemory) {
    if (sanitized) {
        GTEST_SKIP() << "a sanitizer reads too slowly for a flood to be one";
    }
    // More than the memory that there is, then nothing more: not for as long as it takes to be
    // ended.
    const std::string flooding =
        script("flooding",
               "echo 'CPP_WORKER|START sony-1.0'\n"
               "yes 'LOG|[SONY] and so on' | head -n 24000000\nexec cat > /dev/null\n");
    tether_ = start(
        {"/bin/sh",
         {"-c", "ulimit -v 524288; \"$@\" > " + (folder_ / "output").string(), "sh", TETHER_COMMAND,
          "--folder", folder_ / "shots", "--worker", flooding, "--record", folder_ / "record"},
         {},
         {}});
    EXPECT_EQ(status(), "status 1");
    const std::string output = read("output");
    const std::string sentence = "The worker wrote 50,000 lines within 1 s.";
    EXPECT_NE(output.find("! " + sentence), std::string::npos)
        << output.substr(output.size() - 500);
    EXPECT_NE(read("record").find(" # problem worker-floods: " + sentence + "\n"),
              std::string::npos);
}

}  // namespace
