// The table of commands, with no camera open: names, fields, and what each answers.

#include "program/dispatch.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "threads/command_queue.h"

namespace {

struct Outcome {
    std::string lines;
    bool goes_on;
};

Outcome outcome_of(SonyWorker& worker, const std::string& line) REQUIRES(main_thread) {
    testing::internal::CaptureStdout();
    const bool goes_on = dispatch(worker, line);
    return {testing::internal::GetCapturedStdout(), goes_on};
}

struct Row {
    std::string line;
    std::string answer;
};

void expect_answers(const std::vector<Row>& table) REQUIRES(main_thread) {
    for (const Row& row : table) {
        SonyWorker worker;
        const Outcome outcome = outcome_of(worker, row.line);
        EXPECT_EQ(outcome.lines, row.answer.empty() ? "" : row.answer + "\n") << row.line;
        EXPECT_TRUE(outcome.goes_on) << row.line;
    }
}

TEST(Dispatch, Acknowledges) {
    main_thread.assume();
    expect_answers({
        {"PRELOAD", "PRELOADED|OK"},
        {"PRIME", "PRIME_DONE|OK"},
        {"PUMP_ACTIVE", "PUMP_ACTIVE_READY|OK"},
        {"PUMP_IDLE", "PUMP_IDLE_READY|OK"},
        {"PUMP_PAUSE", "PUMP_IDLE_READY|OK"},
        {"PUMP_STOP", "PUMP_IDLE_READY|OK"},
        {"prime", "PRIME_DONE|OK"},
        {"PrImE", "PRIME_DONE|OK"},
        {"PRIME|", "PRIME_DONE|OK"},
        {"prime|a|b|c", "PRIME_DONE|OK"},
    });
}

TEST(Dispatch, RefusesWhatNeedsACamera) {
    main_thread.assume();
    expect_answers({
        {"CAPTURE", "ERROR|Camera not connected"},
        {"REMOTE_CAPTURE", "ERROR|Camera not connected"},
        {"CAPTURE_NONAF", "ERROR|Camera not connected"},
        {"REMOTE_CAPTURE_NONAF", "ERROR|Camera not connected"},
        {"capture|1|2", "ERROR|Camera not connected"},
        {"SET_FILE_TYPE|raw", "ERROR|Camera not connected"},
        {"SET_FILE_TYPE|", "ERROR|Camera not connected"},
        {"DISCONNECT", "DISCONNECTED|"},
        {"disconnect|quiet", "DISCONNECTED|"},
    });
}

TEST(Dispatch, InternalCommandsAreSilentWithoutASession) {
    main_thread.assume();
    expect_answers({
        {"__FILETYPE_CHECK", ""},
        {"__CARD_CHECK", ""},
        {"__APPLY_SETTINGS", ""},
        {"__apply_settings", ""},
        {"__CONNECT_TIMEOUT", ""},
        {"__CONNECT_TIMEOUT|", ""},
        {"__CONNECT_TIMEOUT|abc", ""},
        {"__CONNECT_TIMEOUT|1", ""},
        {"__CONNECT_TIMEOUT|-1", ""},
        {"__CONNECT_TIMEOUT|99999999999999999999999", ""},
    });
}

TEST(Dispatch, SkipsACommandWithoutItsField) {
    main_thread.assume();
    expect_answers({
        {"SET_DOWNLOAD_DIR", ""},
        {"SET_SAVE_DEST", ""},
        {"SET_SAVE_DESTINATION", ""},
        {"SAVE_DEST", ""},
        {"SET_FILE_TYPE", ""},
    });
}

TEST(Dispatch, EchoesAnUnknownLineAsItCame) {
    main_thread.assume();
    for (const char* const line :
         {"foo|bar", "Foo", " ", "|", "||", "CONNECT ", " CONNECT", "PRIME\t", "PRIME\r", "QUIT ",
          "CONNEC", "CONNECTT", "SET_SAVE_DES|disk", "%50RIME", "pr\xC3\xAFme|\xFF", "foo%7Cbar|",
          "__CONNECT_TIMEOUT_|1", "_CARD_CHECK", ""}) {
        expect_answers({{line, std::string("ERROR|Unknown command: ") + line}});
    }
}

TEST(Dispatch, QuitEndsTheLoopWithoutAWord) {
    main_thread.assume();
    for (const char* const line : {"QUIT", "quit", "Quit", "QUIT|now", "QUIT|", "quit|a|b"}) {
        SonyWorker worker;
        const Outcome outcome = outcome_of(worker, line);
        EXPECT_EQ(outcome.lines, "") << line;
        EXPECT_FALSE(outcome.goes_on) << line;
    }
}

TEST(Dispatch, DecodesTheDownloadFolder) {
    main_thread.assume();
    struct Folder {
        std::string line;
        std::string folder;
        std::string answer;
    };
    const Folder table[] = {
        {"SET_DOWNLOAD_DIR|/tmp/a%7Cb", "/tmp/a|b", "DOWNLOAD_DIR|/tmp/a%7Cb\n"},
        {"set_download_dir|/tmp/A", "/tmp/A", "DOWNLOAD_DIR|/tmp/A\n"},
        {"SET_DOWNLOAD_DIR|", "", "DOWNLOAD_DIR|\n"},
        {"SET_DOWNLOAD_DIR|/a|/b", "/a", "DOWNLOAD_DIR|/a\n"},
        {"SET_DOWNLOAD_DIR|100%|", "100%", "DOWNLOAD_DIR|100%25\n"},
        {"SET_DOWNLOAD_DIR| /a/ ", " /a/ ", "DOWNLOAD_DIR| /a/ \n"},
        {"SET_DOWNLOAD_DIR|/a%0d%0A", "/a\r\n", "DOWNLOAD_DIR|/a%0D%0A\n"},
    };
    for (const Folder& row : table) {
        SonyWorker worker;
        EXPECT_EQ(outcome_of(worker, row.line).lines, row.answer);
        EXPECT_EQ(worker.download_dir.get(), row.folder) << row.line;
    }
}

TEST(Dispatch, StoresTheSaveDestinationAsItStands) {
    main_thread.assume();
    const Row table[] = {
        {"SET_SAVE_DEST|disk", "disk"},
        {"SET_SAVE_DESTINATION|card", "card"},
        {"SAVE_DEST|both", "both"},
        {"save_dest|Disk", "Disk"},
        {"SAVE_DEST|", ""},
        {"SAVE_DEST|di%7Csk", "di%7Csk"},
        {"SAVE_DEST|card|disk", "card"},
        {"SAVE_DEST", "both"},
        {"SET_SAVE_DEST", "both"},
        {"SET_SAVE_DESTINATION", "both"},
    };
    for (const Row& row : table) {
        SonyWorker worker;
        EXPECT_EQ(outcome_of(worker, row.line).lines, "") << row.line;
        EXPECT_EQ(worker.save_destination, row.answer) << row.line;
    }
}

// A handle in use keeps CONNECT from asking the SDK; the word is taken all the same.
TEST(Dispatch, ConnectTakesAWordButNotAnEmptyOne) {
    main_thread.assume();
    const Row table[] = {
        {"CONNECT", "card"},      {"CONNECT|", "card"},     {"CONNECT||disk", "card"},
        {"CONNECT|disk", "disk"}, {"connect|disk", "disk"}, {"Connect|DISK|x", "DISK"},
    };
    for (const Row& row : table) {
        SonyWorker worker;
        worker.device_handle = 1;
        worker.save_destination = "card";
        EXPECT_EQ(outcome_of(worker, row.line).lines, "CONNECTED|already\n") << row.line;
        EXPECT_EQ(worker.save_destination, row.answer) << row.line;
    }
}

TEST(MainLoop, StopsAtQuitAndDropsWhatIsBehindIt) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            main_thread.assume();
            for (const char* const line : {"PRIME", "quit|now", "PRELOAD"}) {
                post_command(line);
            }
            SonyWorker worker;
            testing::internal::CaptureStdout();
            run_main_loop(worker);
            const bool answered = testing::internal::GetCapturedStdout() == "PRIME_DONE|OK\n";
            std::_Exit(answered && !post_command("PRIME") ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(MainLoop, StopsWhenTheInputHasEnded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            main_thread.assume();
            post_command("PRIME");
            post_command("PRELOAD");
            end_input();
            SonyWorker worker;
            testing::internal::CaptureStdout();
            run_main_loop(worker);
            const std::string answers = testing::internal::GetCapturedStdout();
            std::_Exit(answers == "PRIME_DONE|OK\nPRELOADED|OK\n" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
