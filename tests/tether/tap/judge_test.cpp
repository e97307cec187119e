// Each complaint has a host that earns it, and one that nearly does.
#include "tether/tap/judge.h"

#include <deque>
#include <gtest/gtest.h>
#include <signal.h>
#include <string>
#include <vector>

#include "tether/conversation/record_line.h"

namespace {

using tap::Fault;

// What is made of a conversation, which is written as in a record. Remarks of a record stand for
// what happened.
class Conversation {
  public:
    explicit Conversation(const std::vector<std::string>& lines, const std::string& folder = "")
        : judge_(folder) {
        for (const std::string& text : lines) {
            const auto line = tether::read_record_line(text);
            if (!line) {
                ADD_FAILURE() << "no line of a record: " << text;
                continue;
            }
            play(*line);
        }
    }

    std::vector<Fault> faults() const {
        std::vector<Fault> faults;
        for (const tap::Complaint& complaint : judge_.complaints().kept()) {
            faults.push_back(complaint.fault);
        }
        return faults;
    }

    std::string report() const {
        return judge_.complaints().report();
    }

  private:
    void play(const tether::RecordLine& line) {
        if (line.mark == '>') {
            judge_.host_says(line);
        } else if (line.mark == '<') {
            judge_.worker_says(line);
        } else if (line.text == "input ended") {
            judge_.input_ended(line);
        } else if (line.text == "SIGTERM") {
            judge_.signalled(SIGTERM, line);
        } else if (line.text == "SIGINT") {
            judge_.signalled(SIGINT, line);
        } else if (line.text == "stalled") {
            judge_.stalled(line);
        } else if (line.text == "killed") {
            judge_.killed(line);
        } else if (line.text == "ended") {
            judge_.worker_ended(line.at);
        } else {
            ADD_FAILURE() << "unknown: " << line.text;
        }
    }

    tap::Judge judge_;
};

using Faults = std::vector<Fault>;

std::vector<std::string> joined(std::vector<std::string> lines,
                                const std::vector<std::string>& more) {
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

// Connected, and the settings have been said.
const std::vector<std::string> session_up{
    "0.1 < CPP_WORKER|START sony-1.0",
    "0.2 < READY|OK",
    "0.3 > SET_DOWNLOAD_DIR|/a",
    "0.4 < DOWNLOAD_DIR|/a",
    "1.0 > CONNECT",
    "1.1 < STATUS|Looking for a camera",
    "1.2 < STATUS|Opening camera session",
    "1.3 < CONNECTED|MODEL-A",
    "1.4 < SAVE_DEST|both",
    "1.5 < FILE_TYPE|jpeg",
};

TEST(Judge, AGoodHostIsNotComplainedOf) {
    const Conversation good(joined(
        session_up, {"2.0 > CAPTURE", "2.8 < REMOTE_CAPTURED|OK", "3.0 < DOWNLOADED|/a/1.JPG",
                     "3.1 > PRIME", "3.2 < PRIME_DONE|OK", "3.3 > SET_DOWNLOAD_DIR|/b",
                     "3.4 < DOWNLOAD_DIR|/b", "4.0 > CAPTURE", "4.8 < REMOTE_CAPTURED|OK",
                     "5.0 < DOWNLOADED|/b/2.JPG", "6.0 > QUIT", "6.5 # ended"}));
    EXPECT_EQ(good.faults(), Faults{});
    EXPECT_EQ(good.report(), "");
}

TEST(Judge, AStallIsToldWithTheLastLineOfTheWorker) {
    const Conversation deaf(joined(session_up, {"9.0 # stalled"}));
    EXPECT_EQ(deaf.faults(), Faults{Fault::output_not_drained});
    EXPECT_NE(deaf.report().find("1.500 < FILE_TYPE|jpeg"), std::string::npos) << deaf.report();
}

TEST(Judge, ACaptureWithoutASessionIsTooSoon) {
    EXPECT_EQ(Conversation({"0.2 < READY|OK", "1.0 > CAPTURE"}).faults(),
              Faults{Fault::capture_too_soon});
    EXPECT_EQ(Conversation({"0.2 < READY|OK", "1.0 > CONNECT", "1.1 > CAPTURE"}).faults(),
              Faults{Fault::capture_too_soon});
}

TEST(Judge, ACaptureBeforeTheSettingsOfAConnectionIsTooSoon) {
    const Conversation hasty({"1.0 > CONNECT", "1.3 < CONNECTED|A", "1.301 > REMOTE_CAPTURE_NONAF",
                              "1.5 < FILE_TYPE|jpeg"});
    EXPECT_EQ(hasty.faults(), Faults{Fault::capture_too_soon});
    EXPECT_NE(hasty.report().find("1.000 > CONNECT\n"), std::string::npos);
    EXPECT_NE(hasty.report().find("1.301 > REMOTE_CAPTURE_NONAF\n"), std::string::npos);
}

TEST(Judge, ACaptureBehindTheFileTypeOrAFenceIsNotTooSoon) {
    EXPECT_EQ(Conversation(
                  {"1.0 > CONNECT", "1.2 < FILE_TYPE|jpeg", "1.3 < CONNECTED|A", "1.31 > CAPTURE"})
                  .faults(),
              Faults{});
    EXPECT_EQ(Conversation({"1.0 > CONNECT", "1.3 < CONNECTED|A", "1.31 > PRIME",
                            "1.5 < PRIME_DONE|OK", "1.6 > capture"})
                  .faults(),
              Faults{});
}

TEST(Judge, AFenceFromBeforeTheSessionDoesNotCount) {
    EXPECT_EQ(Conversation({"1.0 > CONNECT", "1.1 > PRIME", "1.3 < CONNECTED|A",
                            "1.4 < PRIME_DONE|OK", "1.6 > CAPTURE"})
                  .faults(),
              Faults{Fault::capture_too_soon});
}

TEST(Judge, ACaptureBeforeAChangedSettingIsAnsweredIsTooSoon) {
    for (const std::string setting : {"SET_FILE_TYPE|raw", "SAVE_DEST|disk"}) {
        EXPECT_EQ(Conversation(joined(session_up, {"2.0 > " + setting, "2.01 > CAPTURE"})).faults(),
                  Faults{Fault::capture_too_soon})
            << setting;
    }
    EXPECT_EQ(Conversation(joined(session_up, {"2.0 > SET_FILE_TYPE|raw", "2.7 < FILE_TYPE|raw",
                                               "2.8 > SET_SAVE_DEST|disk", "2.9 < SAVE_DEST|disk",
                                               "3.0 > CAPTURE"}))
                  .faults(),
              Faults{});
}

TEST(Judge, ACaptureThatCrossesALossIsNobodysFault) {
    EXPECT_EQ(Conversation(joined(session_up, {"3.0 < DISCONNECTED|", "3.2 > CAPTURE"})).faults(),
              Faults{});
    EXPECT_EQ(Conversation(joined(session_up, {"3.0 < DISCONNECTED|", "4.2 > CAPTURE"})).faults(),
              Faults{Fault::capture_too_soon});
}

TEST(Judge, AnotherFolderUnderAShotIsComplainedOf) {
    const auto shooting = joined(session_up, {"2.0 > CAPTURE", "2.8 < REMOTE_CAPTURED|OK"});
    EXPECT_EQ(Conversation(joined(shooting, {"2.9 > SET_DOWNLOAD_DIR|/b"})).faults(),
              Faults{Fault::folder_changed});
    EXPECT_EQ(Conversation(joined(shooting, {"2.9 > SET_DOWNLOAD_DIR|/a"})).faults(), Faults{})
        << "the same one";
    const auto in_temporary = joined(session_up, {"1.9 > SET_DOWNLOAD_DIR|/tmp", "2.0 > CAPTURE"});
    EXPECT_EQ(Conversation(joined(in_temporary, {"2.9 > SET_DOWNLOAD_DIR|/tmp/./"})).faults(),
              Faults{})
        << "the same one, spelt otherwise";
    EXPECT_EQ(Conversation(joined(in_temporary, {"2.9 > SET_DOWNLOAD_DIR|/usr"})).faults(),
              Faults{Fault::folder_changed});
    EXPECT_EQ(
        Conversation(joined(shooting, {"2.9 < DOWNLOADED|/a/1.JPG", "2.95 > SET_DOWNLOAD_DIR|/b"}))
            .faults(),
        Faults{})
        << "the file is there";
    EXPECT_EQ(Conversation(joined(shooting, {"22.9 > SET_DOWNLOAD_DIR|/b"})).faults(), Faults{})
        << "the shot brought nothing in its time";
    EXPECT_EQ(Conversation(joined(shooting, {"2.9 < LOG|[SONY] warning 0x00025101",
                                             "3.0 > SET_DOWNLOAD_DIR|/b"}))
                  .faults(),
              Faults{})
        << "the camera gave a reason for bringing nothing";
}

TEST(Judge, TheFolderThatTheWorkerWasStartedWithCounts) {
    const std::vector<std::string> lines{"1.0 > CONNECT", "1.3 < CONNECTED|A",
                                         "1.5 < FILE_TYPE|jpeg", "2.0 > CAPTURE",
                                         "2.1 > SET_DOWNLOAD_DIR|/b"};
    EXPECT_EQ(Conversation(lines, "/a").faults(), Faults{Fault::folder_changed});
    EXPECT_EQ(Conversation(lines, "/b").faults(), Faults{});
    EXPECT_EQ(Conversation(lines).faults(), Faults{}) << "there was none to change";
}

TEST(Judge, BothHalvesOfAPairAreAwaited) {
    const auto shooting =
        joined(session_up, {"1.6 < FILE_TYPE|both", "2.0 > CAPTURE", "2.8 < REMOTE_CAPTURED|OK",
                            "2.9 < DOWNLOADED|/a/1.JPG"});
    EXPECT_EQ(Conversation(joined(shooting, {"3.0 > QUIT"})).faults(),
              Faults{Fault::files_left_behind});
    EXPECT_EQ(Conversation(joined(shooting, {"3.0 < DOWNLOADED|/a/1.ARW", "3.1 > QUIT"})).faults(),
              Faults{});
}

TEST(Judge, TheSessionEndedWithAFileOnItsWayIsComplainedOfOnce) {
    const auto shooting = joined(session_up, {"2.0 > CAPTURE", "2.8 < REMOTE_CAPTURED|OK"});
    for (const std::string end : {"2.9 > QUIT", "2.9 > DISCONNECT", "2.9 # input ended"}) {
        EXPECT_EQ(
            Conversation(joined(shooting, {end, "3.0 # input ended", "3.5 # ended"})).faults(),
            Faults{Fault::files_left_behind})
            << end;
    }
    EXPECT_EQ(Conversation(joined(session_up, {"1.6 < SAVE_DEST|card", "2.0 > CAPTURE",
                                               "2.8 < REMOTE_CAPTURED|OK", "2.9 > QUIT"}))
                  .faults(),
              Faults{})
        << "the card keeps its files";
    EXPECT_EQ(Conversation(joined(shooting, {"2.9 < DISCONNECTED|", "3.0 > QUIT"})).faults(),
              Faults{})
        << "the camera took them with it";
}

TEST(Judge, AnErrorWhileOpeningWantsADisconnect) {
    for (const std::string error :
         {"ERROR|Could not open the camera (0x00008204)", "ERROR|Camera reported 0x00008703"}) {
        const std::vector<std::string> failed{"1.0 > CONNECT", "1.1 < STATUS|Looking for a camera",
                                              "1.2 < " + error};
        const Conversation again(joined(failed, {"2.0 > CONNECT", "2.1 < CONNECTED|already"}));
        EXPECT_EQ(again.faults(), Faults{Fault::error_not_answered}) << again.report();
        EXPECT_EQ(Conversation(
                      joined(failed, {"2.0 > DISCONNECT", "2.1 < DISCONNECTED|", "2.2 > CONNECT"}))
                      .faults(),
                  Faults{});
        EXPECT_EQ(Conversation(joined(failed, {"12.0 > QUIT"})).faults(),
                  Faults{Fault::error_not_answered});
        EXPECT_EQ(Conversation(joined(failed, {"3.0 > QUIT"})).faults(), Faults{})
            << "ending the worker is an answer too";
    }
}

TEST(Judge, ATimeOutWhileOpeningWantsNone) {
    EXPECT_EQ(Conversation({"1.0 > CONNECT",
                            "21.2 < ERROR|Could not open the camera (timeout) — replug the camera",
                            "22.0 > CONNECT"})
                  .faults(),
              Faults{});
}

TEST(Judge, AnErrorInMidSessionWantsNone) {
    EXPECT_EQ(
        Conversation(joined(session_up, {"5.0 < ERROR|Camera reported 0x00008703", "60.0 > QUIT"}))
            .faults(),
        Faults{});
}

TEST(Judge, AConnectWhileOpenIsComplainedOf) {
    const Conversation twice(joined(session_up, {"2.0 > CONNECT", "2.1 < CONNECTED|already"}));
    EXPECT_EQ(twice.faults(), Faults{Fault::connected_twice});
    EXPECT_NE(twice.report().find("2.000 > CONNECT\n"), std::string::npos) << twice.report();
    EXPECT_EQ(Conversation(joined(session_up, {"2.0 > DISCONNECT", "2.05 > CONNECT",
                                               "2.1 < DISCONNECTED|", "2.3 < CONNECTED|A"}))
                  .faults(),
              Faults{});
}

TEST(Judge, ALineThatArrivesAsSeveralIsComplainedOf) {
    EXPECT_EQ(Conversation({"1.0 > SET_DOWNLOAD_DIR|" + std::string(4096 - 17, 'a')}).faults(),
              Faults{Fault::line_too_long});
    EXPECT_EQ(Conversation({"1.0 > SET_DOWNLOAD_DIR|" + std::string(4095 - 17, 'a')}).faults(),
              Faults{});
}

TEST(Judge, ABareCarriageReturnAndAZeroByteAreComplainedOf) {
    EXPECT_EQ(Conversation({R"(1.0 >\ SET_DOWNLOAD_DIR|/a\x0Db)"}).faults(),
              Faults{Fault::odd_byte});
    EXPECT_EQ(Conversation({R"(1.0 >\ PRI\x00ME)"}).faults(), Faults{Fault::odd_byte});
    EXPECT_EQ(Conversation({R"(1.0 >\ PRIME\x0D)"}).faults(), Faults{})
        << "those before a line feed are dropped";
}

TEST(Judge, AnInternalCommandIsComplainedOf) {
    EXPECT_EQ(Conversation({"1.0 > __card_check"}).faults(), Faults{Fault::internal_command});
    EXPECT_EQ(Conversation({"1.0 > _CARD_CHECK"}).faults(), Faults{}) << "merely unknown";
}

TEST(Judge, AKillWithoutTheLadderIsComplainedOf) {
    EXPECT_EQ(Conversation({"1.0 < READY|OK", "2.0 # killed"}).faults(),
              Faults{Fault::ladder_left_out});
    EXPECT_EQ(
        Conversation({"1.0 > QUIT", "2.0 # input ended", "3.0 # SIGTERM", "3.1 # killed"}).faults(),
        Faults{Fault::ladder_left_out})
        << "a rung of 100 ms is none";
    EXPECT_EQ(
        Conversation({"1.0 > QUIT", "2.0 # input ended", "3.0 # SIGTERM", "4.0 # killed"}).faults(),
        Faults{})
        << "a second a rung is what one that hangs is given";
}

TEST(Judge, ATerminationWithoutQuitIsComplainedOf) {
    EXPECT_EQ(Conversation({"1.0 < READY|OK", "2.0 # SIGTERM"}).faults(),
              Faults{Fault::ladder_left_out});
    EXPECT_EQ(Conversation({"1.0 > QUIT", "1.1 # SIGTERM"}).faults(), Faults{});
    EXPECT_EQ(Conversation({"1.0 < READY|OK", "2.0 # SIGINT"}).faults(), Faults{})
        << "a person's Ctrl-C";
}

// A host that asks without end, of something that answers nothing, costs no memory.
TEST(Judge, OfWhatIsNeverAnsweredTheLastIsRemembered) {
    std::deque<int> asked;
    for (int count = 0; count < 5000; ++count) {
        tap::remember(asked, count);
    }
    EXPECT_EQ(asked.size(), tap::most_unanswered);
    EXPECT_EQ(asked.back(), 4999);
}

TEST(Judge, OfManyTheFirstAreShownAndTheOthersCounted) {
    const Conversation stubborn(std::vector<std::string>(12, "1.0 > __CARD_CHECK"));
    EXPECT_EQ(stubborn.faults().size(), 5u);
    EXPECT_NE(stubborn.report().find("\nand 7 times more: an internal command\n"),
              std::string::npos)
        << stubborn.report();
}

TEST(Judge, ALongLineIsShownInPart) {
    const Conversation shouting({"1.0 > " + std::string(5000, 'a')});
    EXPECT_NE(shouting.report().find(std::string(200, 'a') + " ... (5000 bytes)\n"),
              std::string::npos);
    EXPECT_EQ(shouting.report().find(std::string(201, 'a')), std::string::npos);
}

}  // namespace
