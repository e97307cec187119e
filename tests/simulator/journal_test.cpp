// The journal: its form, and that the same scene gives the same one.

#include <algorithm>
#include <gtest/gtest.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;

namespace {

// A session with everything in it that a scene can order in advance.
std::vector<std::string> journal_of_a_day() {
    Stage stage(
        "seed 7\ncamera \"MODEL-A\" over USB, card in\n"
        "next SetDeviceProperty 0x0106 answers 0x8402\nduring Release warning 1");
    stage.open();
    EXPECT_EQ(stage.save_info("/tmp/a \"b\"\n"), 0U);
    stage.save_to(stage.shots());
    stage.wait();
    stage.set(0x0106, 3);
    stage.set(0x0106, 3);
    stage.wait();
    stage.set(0x0001, 2);
    SendCommand(stage.handle, 0, 1);
    stage.wait();  // the file comes from another thread than the button's notices
    SendCommand(stage.handle, 0, 0);
    stage.set(0x0001, 1);
    stage.wait();
    stage.tell("flap 2");
    stage.wait();
    stage.get(0x0708);
    stage.close();
    std::vector<std::string> lines;
    for (const auto& fields : stage.journal_fields()) {
        std::string line = fields.at(2) + " " + fields.at(3) + " " + fields.at(4);
        const std::size_t folder = line.find(stage.shots().string());
        if (folder != std::string::npos) {
            line.replace(folder, stage.shots().string().size(), "{shots}");
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

TEST(Journal, HoldsEveryCallAndCallbackInOrder) {
    const std::vector<std::string> expected = {
        "main Init 0 true",
        "main EnumCameraObjects 3 0x00000000 1 camera",
        "main Connect \"MODEL-A\" 0 0 null null null 0 0 0x00000000",
        "sdk-1 OnConnected 3 -",
        "main ReleaseEnumeration -",
        "main SetSaveInfo \"/tmp/a \\\"b\\\"\\n\" \"\" -1 0x00000000",
        "main SetSaveInfo \"{shots}\" \"\" -1 0x00000000",
        "main SetDeviceProperty 0x011A 2 0x00000000",
        "main SetDeviceProperty 0x0119 1 0x00000000",
        "sdk-1 OnPropertyChangedCodes 0x011A -",
        "sdk-1 OnPropertyChangedCodes 0x0119 -",
        "main SetDeviceProperty 0x0106 3 0x00008402",
        "main SetDeviceProperty 0x0106 3 0x00000000",
        "sdk-1 OnPropertyChangedCodes 0x0106 -",
        "main SetDeviceProperty 0x0001 2 0x00000000",
        "main SendCommand 0 1 0x00000000",
        "main SendCommand 0 0 0x00000000",
        "main SetDeviceProperty 0x0001 1 0x00000000",
        "sdk-1 OnPropertyChangedCodes 0x0001 -",
        "sdk-1 OnCompleteDownload \"DSC00001.JPG\" 0xFFFFFFFF -",
        "sdk-1 OnPropertyChangedCodes 0x0001 -",
        "sdk-1 OnWarning 0x00020002 -",
        "sdk-1 OnConnected 3 -",
        "sdk-1 OnWarning 0x00020002 -",
        "sdk-1 OnConnected 3 -",
        "main GetSelectDeviceProperties 0x0708 0x00000000 2",
        "main ReleaseDeviceProperties 1 0x00000000",
        "main Disconnect 1 0x00000000",
        "main ReleaseDevice 1 0x00000000",
        "sdk-1 OnDisconnected 0x00000000 -",
        "sdk-1 OnWarning 0x00000001 -",
        "main Release true",
    };
    // Callbacks of one thread keep their order, and so do the calls; where the two meet is chance.
    const auto of = [](const std::vector<std::string>& lines, const std::string& thread) {
        std::vector<std::string> mine;
        for (const std::string& line : lines) {
            if (line.rfind(thread, 0) == 0) {
                mine.push_back(line);
            }
        }
        return mine;
    };
    const auto journal = journal_of_a_day();
    EXPECT_EQ(of(journal, "main "), of(expected, "main "));
    EXPECT_EQ(of(journal, "sdk-1 "), of(expected, "sdk-1 "));
    EXPECT_EQ(journal.size(), expected.size());
}

TEST(Journal, IsTheSameForTheSameScene) {
    const auto threads_apart = [] {
        auto journal = journal_of_a_day();
        std::stable_partition(journal.begin(), journal.end(),
                              [](const std::string& line) { return line.rfind("main ", 0) == 0; });
        return journal;
    };
    const auto first = threads_apart();
    for (int run = 0; run < 5; ++run) {
        EXPECT_EQ(threads_apart(), first);
    }
}

TEST(Journal, HasTimesThatRise) {
    Stage stage("looking 20ms");
    stage.open();
    const auto lines = stage.journal_fields();
    double latest = 0;
    for (const auto& fields : lines) {
        ASSERT_EQ(fields.size(), 5U);
        EXPECT_EQ(fields[0].size() - fields[0].find('.'), 7U) << fields[0];
        EXPECT_GE(std::stod(fields[0]), latest);
        latest = std::stod(fields[0]);
    }
    EXPECT_GE(std::stod(lines[1][1]), 0.020);
    EXPECT_EQ(lines[1][3], "EnumCameraObjects 3");
}

TEST(Journal, IsAppendedTo) {
    Stage stage;
    ASSERT_TRUE(stage.init());
    EXPECT_TRUE(Release());
    ASSERT_TRUE(stage.init());
    EXPECT_EQ(stage.journal(),
              (std::vector<std::string>{"Init 0 true", "Release true", "Init 0 true"}));
}

TEST(Journal, HasACallbackAfterTheCallThatCausedIt) {
    Stage stage;
    stage.open();
    for (int time = 0; time < 200; ++time) {
        stage.set(0x0106, 1 + static_cast<CrInt64u>((time + 1) % 2));
    }
    stage.wait();
    int called = 0;
    for (const std::string& line : stage.journal()) {
        called += line.rfind("SetDeviceProperty", 0) == 0 ? 1 : 0;
        called -= line.rfind("OnPropertyChangedCodes", 0) == 0 ? 1 : 0;
        ASSERT_GE(called, 0);
    }
}
