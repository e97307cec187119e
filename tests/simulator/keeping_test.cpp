// Nothing that lies in the folder of the shots is lost: not the user's files, not those of an
// earlier run or of another camera.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

#include "tests/simulator/other_process.h"
#include "tests/simulator/stage.h"
#include "tests/simulator/system_calls.h"

using namespace SCRSDK;
using Names = std::vector<std::string>;
namespace fs = std::filesystem;

namespace {

std::string content(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write(const fs::path& path, const std::string& text = "the user's own") {
    std::ofstream(path, std::ios::binary) << text;
}

Names names_in(const fs::path& folder) {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool is_whole_jpeg(const fs::path& path) {
    const std::string bytes = content(path);
    return bytes.size() > 4 && bytes.substr(0, 2) == "\xFF\xD8" &&
           bytes.substr(bytes.size() - 2) == "\xFF\xD9";
}

// For what no call waits for.
bool comes_true(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    return condition();
}

class Keeping : public testing::Test {
  protected:
    ~Keeping() override {
        system_calls::leave_alone();
    }

    void shoot(int times = 1) {
        if (stage.handle == 0) {
            stage.open();
            stage.save_to(stage.shots());
        }
        for (int time = 0; time < times; ++time) {
            stage.shoot();
        }
        stage.wait();
    }
    fs::path shot(const std::string& name) const {
        return stage.shots() / name;
    }
    // The files, but for those that were there.
    Names new_files(const Names& before) {
        Names names = stage.files();
        for (const std::string& name : before) {
            const auto found = std::find(names.begin(), names.end(), name);
            EXPECT_NE(found, names.end()) << name << " is gone";
            if (found != names.end()) {
                names.erase(found);
            }
        }
        return names;
    }

    Stage stage;
};

}  // namespace

TEST_F(Keeping, ASecondRunReplacesNothing) {
    shoot(2);
    stage.close();
    const std::string first = content(shot("DSC00001.JPG"));
    Stage second("seed 2");
    second.open();
    second.save_to(stage.shots());
    second.shoot();
    second.wait();
    EXPECT_TRUE(second.recorder.got("OnCompleteDownload \"DSC00003.JPG\" 0xFFFFFFFF"));
    EXPECT_EQ(names_in(stage.shots()), (Names{"DSC00001.JPG", "DSC00002.JPG", "DSC00003.JPG"}));
    EXPECT_EQ(content(shot("DSC00001.JPG")), first);
}

TEST_F(Keeping, TheCounterGoesOnBehindTheHighestNumber) {
    const Names before{"DSC00007.ARW", "DSC12345.JPG", "DSC_0100.JPG", "XDSC00200.JPG",
                       "dsc00012.jpg", "DSC9999.JPG",  "DSC00300a.JPG"};
    for (const std::string& name : before) {
        write(shot(name));
    }
    shoot(3);
    EXPECT_EQ(new_files(before), (Names{"DSC00013.JPG", "DSC00014.JPG", "DSC00015.JPG"}));
    const auto state = stage.state();
    EXPECT_TRUE(std::any_of(state.begin(), state.end(), [](const std::string& line) {
        return line.find(", next 16") != std::string::npos;
    }));
    for (const std::string& name : before) {
        EXPECT_EQ(content(shot(name)), "the user's own") << name;
    }
}

// Otherwise the pair would lose that half.
TEST_F(Keeping, AHiddenNameOfEitherHalfThatIsTakenGivesTheNextNumber) {
    const Names before{".DSC00001.JPG.camera-sim.part"};
    write(shot(before[0]));
    stage.open();
    stage.set(0x0106, 3);
    stage.set(0x0507, 0);
    stage.save_to(stage.shots());
    shoot();
    EXPECT_EQ(names_in(stage.shots()), (Names{before[0], "DSC00002.ARW", "DSC00002.JPG"}));
    EXPECT_EQ(content(shot(before[0])), "the user's own");
}

TEST_F(Keeping, TheHighestNumberCountsWhateverCarriesIt) {
    fs::create_directory(shot("dsc00040"));
    fs::create_symlink("/nowhere", shot("DSC00041.xmp"));
    shoot();
    EXPECT_EQ(stage.files(), (Names{"DSC00041.xmp", "DSC00042.JPG", "dsc00040"}));
}

TEST_F(Keeping, ShotsThatWaitInTheBufferGoOnBehindIt) {
    write(shot("DSC00005.JPG"));
    stage.open();
    EXPECT_EQ(stage.tell("next file late 20ms"), "");
    stage.save_to(stage.shots());
    shoot(3);  // the later two are numbered before the first one has looked into the folder
    EXPECT_EQ(new_files({"DSC00005.JPG"}), (Names{"DSC00006.JPG", "DSC00007.JPG", "DSC00008.JPG"}));
}

TEST_F(Keeping, BehindTheLastNumberComesTheFirstThatIsFree) {
    write(shot("DSC09999.JPG"));
    write(shot("DSC00001.JPG"));
    shoot(2);
    EXPECT_EQ(new_files({"DSC00001.JPG", "DSC09999.JPG"}), (Names{"DSC00002.JPG", "DSC00003.JPG"}));
}

TEST_F(Keeping, ACounterThatWasNamedGoesToTheNextFreeNumber) {
    write(shot("DSC00005.ARW"));
    write(shot("dsc00006.jpg"));
    write(shot("DSC00100.JPG"));
    stage.open();
    EXPECT_EQ(stage.tell("counter 4"), "");
    stage.save_to(stage.shots());
    shoot(3);
    EXPECT_EQ(new_files({"DSC00005.ARW", "dsc00006.jpg", "DSC00100.JPG"}),
              (Names{"DSC00004.JPG", "DSC00007.JPG", "DSC00008.JPG"}));
}

TEST_F(Keeping, TheHalvesOfAPairShareANumberThatIsFreeForBoth) {
    write(shot("DSC00001.JPG"));
    stage.open();
    for (const char* line : {"counter 1", "dial both", "set 0x0507 0"}) {
        EXPECT_EQ(stage.tell(line), "");
    }
    stage.save_to(stage.shots());
    shoot();
    EXPECT_EQ(new_files({"DSC00001.JPG"}), (Names{"DSC00002.ARW", "DSC00002.JPG"}));
}

TEST_F(Keeping, TheHostsOwnNumbersAreNoReasonToReplace) {
    write(shot("SHOOT00041.JPG"));
    stage.open();
    stage.save_to(stage.shots());
    EXPECT_EQ(stage.save_info(stage.shots().string(), "SHOOT", 41), 0U);
    shoot(2);
    EXPECT_EQ(new_files({"SHOOT00041.JPG"}), (Names{"SHOOT00042.JPG", "SHOOT00043.JPG"}));
}

TEST_F(Keeping, ThePictureCarriesTheNumberOfItsName) {
    shoot();
    stage.close();
    const std::string first = content(shot("DSC00001.JPG"));
    Stage second;
    write(second.shots() / "DSC00001.ARW");
    second.open();
    second.save_to(second.shots());
    second.shoot();
    second.wait();
    // The number is drawn into the picture.
    EXPECT_TRUE(is_whole_jpeg(second.shots() / "DSC00002.JPG"));
    EXPECT_NE(content(second.shots() / "DSC00002.JPG"), first);
}

TEST_F(Keeping, TheUsersPicturesMayLieInTheFolderOfTheShots) {
    write(shot("DSC00001.JPG"), "first");
    write(shot("b.jpg"), "second");
    setenv("CAMERA_SIM_PICTURES", stage.shots().c_str(), 1);
    shoot(4);
    EXPECT_EQ(new_files({"DSC00001.JPG", "b.jpg"}),
              (Names{"DSC00002.JPG", "DSC00003.JPG", "DSC00004.JPG", "DSC00005.JPG"}));
    EXPECT_EQ(content(shot("DSC00001.JPG")), "first");
    EXPECT_EQ(content(shot("b.jpg")), "second");
    EXPECT_EQ(content(shot("DSC00004.JPG")), "first");  // a shot is none of the user's pictures
    EXPECT_EQ(content(shot("DSC00005.JPG")), "second");
}

TEST_F(Keeping, NothingIsWrittenThroughALink) {
    const fs::path outside = stage.folder() / "outside";
    write(outside);
    const Names links{".DSC00001.camera-sim.lock", ".DSC00002.JPG.camera-sim.part",
                      ".DSC00003.JPG.part", "DSC00004.JPG"};
    for (const std::string& name : links) {
        fs::create_symlink(outside, shot(name));
    }
    fs::create_symlink(stage.folder() / "nowhere", shot("DSC00005.JPG"));
    stage.open();
    EXPECT_EQ(stage.tell("counter 1"), "");
    stage.save_to(stage.shots());
    shoot(2);
    EXPECT_EQ(content(outside), "the user's own");
    EXPECT_FALSE(fs::exists(stage.folder() / "nowhere"));
    for (const std::string& name : links) {
        EXPECT_TRUE(fs::is_symlink(shot(name))) << name;
    }
    EXPECT_TRUE(is_whole_jpeg(shot("DSC00003.JPG")));
    EXPECT_TRUE(is_whole_jpeg(shot("DSC00006.JPG")));
}

TEST_F(Keeping, AFolderWithEveryNumberCostsTheShot) {
    // All of them one file's: files of their own would take long to make and to remove.
    write(shot("DSC00001.JPG"), "");
    for (int number = 2; number <= 9999; ++number) {
        fs::create_hard_link(shot("DSC00001.JPG"),
                             shot("DSC" + std::to_string(100000 + number).substr(1) + ".JPG"));
    }
    testing::internal::CaptureStderr();
    shoot();
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "DSC00001.JPG was not written: every number is taken\n"),
              std::string::npos);
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00025104"));
    EXPECT_EQ(stage.files().size(), 9999U);
}

#if defined(__linux__)

TEST_F(Keeping, ANameThatIsTakenInTheLastMomentIsKept) {
    system_calls::before_rename = [this] {
        if (!fs::exists(shot("DSC00001.JPG"))) {
            write(shot("DSC00001.JPG"));
        }
        return 0;
    };
    shoot(2);
    EXPECT_EQ(stage.files(), (Names{"DSC00001.JPG", "DSC00002.JPG", "DSC00003.JPG"}));
    EXPECT_EQ(content(shot("DSC00001.JPG")), "the user's own");
    EXPECT_TRUE(is_whole_jpeg(shot("DSC00002.JPG")));
}

TEST_F(Keeping, ASecondHalfWhoseNameIsTakenInTheLastMomentIsNotSent) {
    system_calls::before_rename = [this] {
        if (fs::exists(shot("DSC00001.ARW"))) {
            write(shot("DSC00001.JPG"));
        }
        return 0;
    };
    stage.open();
    EXPECT_EQ(stage.tell("dial both"), "");
    EXPECT_EQ(stage.tell("set 0x0507 0"), "");
    stage.save_to(stage.shots());
    testing::internal::CaptureStderr();
    shoot();
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "DSC00001.JPG was not written: there is a file of that name\n"),
              std::string::npos);
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00025104"));
    EXPECT_EQ(stage.files(), (Names{"DSC00001.ARW", "DSC00001.JPG"}));
    EXPECT_EQ(content(shot("DSC00001.JPG")), "the user's own");
}

TEST_F(Keeping, AFileSystemThatKnowsNoSuchRenameReplacesNothingEither) {
    for (const int link_error : {0, EPERM, EOPNOTSUPP}) {
        Stage here;
        const auto take_the_first = [&here] {
            if (!fs::exists(here.shots() / "DSC00001.JPG")) {
                write(here.shots() / "DSC00001.JPG");
            }
        };
        system_calls::before_rename = [&] {
            take_the_first();
            return EINVAL;
        };
        system_calls::before_link = [link_error] {
            return link_error;
        };
        here.open();
        here.save_to(here.shots());
        here.shoot();
        here.shoot();
        here.wait();
        EXPECT_EQ(here.files(), (Names{"DSC00001.JPG", "DSC00002.JPG", "DSC00003.JPG"}));
        EXPECT_EQ(content(here.shots() / "DSC00001.JPG"), "the user's own");
        EXPECT_TRUE(is_whole_jpeg(here.shots() / "DSC00002.JPG"));
        EXPECT_TRUE(is_whole_jpeg(here.shots() / "DSC00003.JPG"));
    }
}

#endif

TEST_F(Keeping, TwoCamerasAtOnceInOneFolderLoseNothing) {
    unsetenv("CAMERA_SIM_CONTROL");
    constexpr int shots = 40;
    OtherProcess one(stage.shots().string(), shots);
    OtherProcess other(stage.shots().string(), shots);
    std::set<std::string> reported;
    std::size_t reports = 0;
    for (OtherProcess* process : {&one, &other}) {
        for (const std::string& line : process->lines_until("done")) {
            if (line.rfind("OnCompleteDownload", 0) == 0) {
                ++reports;
                reported.insert(line.substr(line.find('"') + 1, 12));
            }
        }
        EXPECT_EQ(process->end(), 0);
    }
    EXPECT_EQ(reports, std::size_t{2} * shots);
    EXPECT_EQ(stage.files(), Names(reported.begin(), reported.end()));
    EXPECT_EQ(reported.size(), std::size_t{2} * shots);
    for (const std::string& name : reported) {
        EXPECT_TRUE(is_whole_jpeg(shot(name))) << name;
    }
}

TEST(LeftBehind, WhatAKilledCameraLeavesIsClearedWithTheNextShot) {
    Stage stage("next file late 1000s");
    const fs::path journal = stage.folder() / "journal of the other";
    setenv("CAMERA_SIM_JOURNAL", journal.c_str(), 1);
    unsetenv("CAMERA_SIM_CONTROL");
    OtherProcess killed(stage.shots().string(), 1);
    const Names hidden{".DSC00001.JPG.camera-sim.part", ".DSC00001.camera-sim.lock"};
    EXPECT_TRUE(comes_true([&] { return stage.files() == hidden; }));

    Stage other;
    other.open();
    other.save_to(stage.shots());
    other.shoot();
    other.wait();
    EXPECT_EQ(stage.files(), (Names{hidden[0], hidden[1], "DSC00002.JPG"}));  // it lives

    killed.kill();
    EXPECT_EQ(stage.files(), (Names{hidden[0], hidden[1], "DSC00002.JPG"}));
    other.shoot();
    other.wait();
    EXPECT_EQ(stage.files(), (Names{"DSC00002.JPG", "DSC00003.JPG"}));
}

TEST(LeftBehind, ANumberThatWasTakenForADeadCameraIsFreeAgain) {
    Stage stage;
    write(stage.shots() / ".DSC00001.camera-sim.lock", "");
    write(stage.shots() / ".DSC00001.ARW.camera-sim.part", "half");
    stage.open();
    stage.save_to(stage.shots());
    stage.shoot();
    stage.wait();
    EXPECT_EQ(stage.files(), Names{"DSC00001.JPG"});
}

TEST(LeftBehind, NothingElseIsCleared) {
    Stage stage;
    const Names look_alikes{
        ".DSC00009.JPG.part",       ".DSC0001.camera-sim.lock",  ".DSC00003.JPG.camera-sim.part",
        "DSC00004.camera-sim.lock", ".DSC00005.camera-sim.lock", ".camera-sim.lock"};
    for (const std::string& name : look_alikes) {
        write(stage.shots() / name);
    }
    fs::create_directory(stage.shots() / ".DSC00006.camera-sim.lock");
    fs::create_symlink(stage.shots() / look_alikes[0], stage.shots() / ".DSC00007.camera-sim.lock");
    ASSERT_EQ(mkfifo((stage.shots() / ".DSC00008.camera-sim.lock").c_str(), 0600), 0);
    const Names before = stage.files();
    stage.open();
    stage.save_to(stage.shots());
    for (int time = 0; time < 9; ++time) {
        stage.shoot();
    }
    stage.wait();
    const Names after = stage.files();
    EXPECT_TRUE(std::includes(after.begin(), after.end(), before.begin(), before.end()));
    EXPECT_EQ(after.size(), before.size() + 9);
    for (const std::string& name : look_alikes) {
        EXPECT_EQ(content(stage.shots() / name), "the user's own") << name;
    }
}

TEST(LeftBehind, TheHiddenFilesAreGoneWhenTheShotIsToldOf) {
    Stage stage;
    stage.open();
    stage.save_to(stage.shots());
    Names seen;
    stage.recorder.meanwhile = [&] {
        seen = stage.files();
    };
    stage.shoot();
    stage.wait();
    stage.recorder.meanwhile = nullptr;
    EXPECT_EQ(seen, Names{"DSC00001.JPG"});
}
