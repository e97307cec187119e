// A shoot on a worker that is made of its record ends as the recorded one ended.
#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <poll.h>
#include <signal.h>
#include <string>
#include <vector>

#include "host/process/exit_watch.h"
#include "host/process/pipe.h"
#include "host/process/spawn.h"
#include "tests/tether/faults/fault_test.h"

static void PrintTo(const Fact& fact, std::ostream* stream) {
    *stream << fact.scene;
}

namespace {

// What a record cannot tell.
struct Limits {
    bool unreported = false;  // pictures came that no line names: they are in no record
    bool late = false;        // what matters is that something was late: played fast, it is not
};

class ReplayTest : public FaultTest {
  protected:
    void SetUp() override {
        setenv("TMPDIR", folder_.c_str(), 1);  // where the replay counts
    }

    // What a shoot came to, as far as a record can tell it: sizes and times are others.
    struct Outcome {
        std::string status;
        std::string pictures;
        std::string said;
    };

    Outcome outcome() {
        const std::string ended = status();
        const Words words = words_of(output_, folder_ / "shots");
        std::string pictures = words.brought + "\n";
        for (const std::string& picture : words.pictures) {
            pictures += picture.substr(0, picture.find("  ")) +
                        (picture.ends_with(", damaged") ? " damaged\n" : "\n");
        }
        std::string said = words.lost + "\n";
        std::vector<std::string> sentences = words.said;
        if (in_any_order_) {
            std::sort(sentences.begin(), sentences.end());
        }
        for (const std::string& line : sentences) {
            said += "! " + line + "\n";
        }
        return {ended, pictures, said};
    }

    Outcome replayed(std::vector<std::string> options, const std::string& mode) {
        fs::remove_all(folder_ / "shots");
        options.insert(
            options.end(),
            {"--worker", script("replay", "exec " TETHER_COMMAND " replay " + mode + " \"" +
                                              (folder_ / "record").string() + "\" \"$@\"\n")});
        start_tether(options);
        return outcome();
    }

    void expect_the_same(const Outcome& recorded, const std::vector<std::string>& options,
                         const Limits& limits = {}) {
        const bool at_length = std::getenv("CAMERA_WORKER_LONG") != nullptr;
        std::vector<std::string> modes(at_length ? 2 : 1, "");
        if (!limits.late) {
            modes.insert(modes.end(), at_length ? 10 : 1, "--fast");
        }
        for (const std::string& mode : modes) {
            expect_to_end_as(recorded, options, mode, !limits.unreported);
        }
    }

    void expect_to_end_as(const Outcome& recorded, const std::vector<std::string>& options,
                          const std::string& mode, bool with_pictures = true) {
        const Outcome again = replayed(options, mode);
        EXPECT_EQ(again.status, recorded.status) << mode << "\n" << output_ << read("stderr");
        EXPECT_EQ(again.said, recorded.said) << mode << "\n" << output_ << read("record");
        if (with_pictures) {
            EXPECT_EQ(again.pictures, recorded.pictures) << mode << "\n" << output_;
        }
    }

    std::vector<std::string> with_record(std::vector<std::string> options) {
        options.insert(options.end(), {"--record", folder_ / "record"});
        return options;
    }

    bool in_any_order_ = false;  // several threads have caused what is said
};

TEST_F(ReplayTest, ShotsArriveAgain) {
    start_tether(with_record({"--shots", "3"}));
    const Outcome recorded = outcome();
    EXPECT_EQ(recorded.status, "status 0");
    expect_the_same(recorded, {"--shots", "3"});
    EXPECT_EQ(read("stderr").find("tether replay:"), std::string::npos)
        << "the same host says the same:\n"
        << read("stderr");
}

TEST_F(ReplayTest, ARedactedRecordCanBePlayedToo) {
    start_tether(with_record({"--shots", "2", "--redact"}));
    EXPECT_EQ(outcome().status, "status 0");
    EXPECT_EQ(replayed({"--shots", "2"}, "--fast").status, "status 0") << output_;
    EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
}

TEST_F(ReplayTest, TheRecordOfATapCanBePlayedToo) {
    start_tether({"--shots", "2", "--worker",
                  script("tapped", "exec " TETHER_COMMAND " tap --record \"" +
                                       (folder_ / "record").string() + "\" " WORKER " \"$@\"\n")});
    EXPECT_EQ(outcome().status, "status 0") << output_;
    EXPECT_NE(read("stderr").find("tether tap: the host did nothing wrong"), std::string::npos)
        << read("stderr");
    for (const char* mode : {"", "--fast"}) {
        EXPECT_EQ(replayed({"--shots", "2"}, mode).status, "status 0") << output_;
        EXPECT_TRUE(printed("2 shots, 2 files, ")) << output_;
    }
}

TEST_F(ReplayTest, APictureOfTheButtonComesAgain) {
    const std::vector<std::string> options{"--shots", "2", "--every", "4"};
    start_tether(with_record(options));
    read_to("DOWNLOADED|");
    tell_camera("shutter");
    expect_the_same(outcome(), options);
}

TEST_F(ReplayTest, ALostCameraIsLostAgain) {
    const std::vector<std::string> options{"--shots", "2", "--every", "4"};
    start_tether(with_record(options));
    read_to("DOWNLOADED|");
    tell_camera("unplug");
    read_to("the camera went away; waiting for it");
    tell_camera("plug");
    expect_the_same(outcome(), options);
}

TEST_F(ReplayTest, AWorkerThatDiedOnceDiesOnceAgain) {
    const std::string dying =
        script("dying", "[ -e " + (folder_ / "died").string() + " ] && exec " WORKER "\n: > " +
                            (folder_ / "died").string() + "\nexit 3\n");
    start_tether(with_record({"--shots", "1", "--worker", dying}));
    expect_the_same(outcome(), {"--shots", "1"});
}

TEST_F(ReplayTest, AWorkerThatGaveUpGivesUpAgain) {
    start_tether(
        with_record({"--worker", script("broken", "echo 'the library is missing' >&2\nexit 3\n")}));
    expect_the_same(outcome(), {});
}

// Every killing waits for all of the ladder: each way of playing is a test of its own.
class ReplayKilledTest : public ReplayTest, public testing::WithParamInterface<const char*> {};

TEST_P(ReplayKilledTest, AWorkerThatHadToBeKilledHasToBeKilledAgain) {
    write("scene", "timing instant\nnext Disconnect hangs\n");
    const std::string deaf = script("deaf", "trap '' TERM\n" WORKER "\nsleep 60\n");
    start_tether(with_record({"--shots", "1", "--worker", deaf}));
    expect_to_end_as(outcome(), {"--shots", "1"}, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Modes, ReplayKilledTest, testing::Values("", "--fast"),
                         [](const auto& test) { return *test.param == 0 ? "AsItWas" : "Fast"; });

TEST_F(ReplayTest, AHostThatSaysSomethingElseIsToldWhichLineOnRequestAtItsEnd) {
    write("record",
          "0.000 # 2026-11-22 11:04:29 UTC, Linux 6.1 x86_64, tether 1.0.0, record 1\n"
          "0.001 < CPP_WORKER|START sony-1.0\n0.002 < READY|OK\n0.003 > CONNECT\n");
    for (const std::string mode : {"--fast", "--strict"}) {
        tether_ = start({TETHER_COMMAND, {"replay", mode, folder_ / "record"}, {}, folder_ / mode});
        read_to("READY|OK");
        tether_->send("CAPTURE");
        if (mode == "--fast") {
            tether_->send("QUIT");
        }
        EXPECT_EQ(status(), mode == "--fast" ? "status 0" : "status 3");
        EXPECT_TRUE(read(mode).starts_with("tether replay: " + (folder_ / "record").string() +
                                           ":4: expected \"CONNECT\", the host said \"CAPTURE\"\n"))
            << read(mode);
    }
}

TEST_F(ReplayTest, AHostThatDoesNotReadCanEndItAllTheSame) {
    std::string lines =
        "0.000 # 2026-11-22 11:04:29 UTC, Linux 6.1 x86_64, tether 1.0.0, record 1\n";
    for (int count = 0; count < 200; ++count) {
        lines += "0.001 < LOG|" + std::string(1000, 'a') + "\n";
    }
    write("record", lines);
    // Nobody reads of the pipe.
    const auto pipe = host::make_pipe();
    ASSERT_TRUE(pipe);
    host::SpawnRequest request;
    request.executable = TETHER_COMMAND;
    request.arguments = {"replay", "--fast", folder_ / "record"};
    const auto input = host::make_pipe();
    std::string error;
    const auto process = host::spawn(request, input->read_end, pipe->write_end, error);
    ASSERT_TRUE(process) << error;
    host::ExitWatch replay(*process);
    pollfd wanted{pipe->read_end.number(), POLLIN, 0};
    ASSERT_EQ(poll(&wanted, 1, 30'000), 1);
    EXPECT_TRUE(replay.signal(SIGTERM));
    const auto exit = replay.await(host::after(patience));
    ASSERT_TRUE(exit);
    EXPECT_EQ(describe(*exit), "status 0");
}

TEST_F(ReplayTest, WrongCallsAreSaidSo) {
    write("picture", "\xFF\xD8\xFF");
    const std::string heading = "   0.000 # 2026-05-01 12:00:00 UTC, tether 1.0.0, record 1\n";
    write("long", heading + std::string(600'000, 'a'));
    const struct {
        std::vector<std::string> arguments;
        std::string said;
    } calls[] = {
        {{}, "tether: which record? tether replay [OPTIONS] RECORD\n"},
        {{folder_ / "none"},
         "tether: cannot read " + (folder_ / "none").string() + ": No such file or directory\n"},
        {{folder_}, "tether: cannot read " + folder_.string() + ": it is a folder\n"},
        {{folder_ / "picture"},
         "tether: " + (folder_ / "picture").string() + ": it does not begin as a record does\n"},
        {{folder_ / "long"},
         "tether: " + (folder_ / "long").string() + ": a line is longer than any of a record\n"},
        {{"/dev/zero"}, "tether: /dev/zero: a line is longer than any of a record\n"},
    };
    for (const auto& call : calls) {
        fs::remove(folder_ / "errors");
        std::vector<std::string> arguments{"replay"};
        arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
        tether_ = start({TETHER_COMMAND, arguments, {}, folder_ / "errors"});
        EXPECT_EQ(status(), "status 2");
        EXPECT_EQ(read("errors"), call.said);
    }
}

TEST_F(ReplayTest, ASignalThatStopsIsTakenForAnEnd) {
    write("stopped",
          "   0.000 # 2026-05-01 12:00:00 UTC, tether 1.0.0, record 1\n"
          "   0.001 < READY|OK\n   0.002 # the worker ended with signal " +
              std::to_string(SIGSTOP) + "\n");
    tether_ = start({TETHER_COMMAND, {"replay", folder_ / "stopped"}, {}, folder_ / "errors"});
    EXPECT_EQ(status(), "status " + std::to_string(128 + SIGSTOP));
    EXPECT_EQ(read("errors"), "tether replay: signal " + std::to_string(SIGSTOP) +
                                  " ends no process; ending with status " +
                                  std::to_string(128 + SIGSTOP) + "\n");
}

// Every fault of the virtual camera, as a shoot met it.
class ReplayFaultTest : public ReplayTest, public testing::WithParamInterface<Fact> {};

TEST_P(ReplayFaultTest, EndsTheSameWay) {
    const Fact& fact = GetParam();
    if (makes_raw(fact) && !PICTURES_CAN_BE_DRAWN) {
        GTEST_SKIP() << "only the picture module makes RAW files";
    }
    in_any_order_ = fact.in_any_order;
    const std::vector<std::string> options = options_of(fact);
    shoot(fact, with_record(options));
    const std::string name = fact.name;
    expect_the_same(
        outcome(), options,
        {name == "FileNamedNull" || name == "FileNamedOtherwise" || name == "FileNumbered",
         name == "FileLateForItsShot"});
}

INSTANTIATE_TEST_SUITE_P(Faults, ReplayFaultTest, testing::ValuesIn(facts),
                         [](const auto& test) { return test.param.name; });

}  // namespace
