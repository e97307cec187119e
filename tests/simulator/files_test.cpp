// How a file can go wrong on its way, and where pictures come from.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/resource.h>
#include <sys/stat.h>

#include "tests/simulator/stage.h"

using namespace SCRSDK;
using Names = std::vector<std::string>;

namespace {

std::string report(const std::string& name, const std::string& number = "0xFFFFFFFF") {
    return "OnCompleteDownload " + (name == "null" ? name : "\"" + name + "\"") + " " + number;
}

Names reports(Stage& stage) {
    Names names;
    for (const std::string& call : stage.recorder.calls()) {
        if (call.rfind("OnCompleteDownload", 0) == 0) {
            names.push_back(call);
        }
    }
    return names;
}

std::string content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A stage with an open session that saves to its own folder.
class Files : public testing::Test {
  protected:
    void set_scene(const std::string& scene) {
        stage.emplace(scene);
        stage->open();
        stage->save_to(stage->shots());
    }

    std::optional<Stage> stage;
};

}  // namespace

TEST_F(Files, CanBeSlow) {
    set_scene("next file late 40ms");
    const auto start = std::chrono::steady_clock::now();
    stage->shoot();
    EXPECT_TRUE(stage->recorder.got(report("DSC00001.JPG")));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(40));
}

TEST_F(Files, CanBeTruncated) {
    set_scene("next file truncated");
    stage->shoot();
    stage->shoot();
    stage->wait();
    const std::string cut = content(stage->shots() / "DSC00001.JPG");
    const std::string whole = content(stage->shots() / "DSC00002.JPG");
    EXPECT_EQ(cut.substr(0, 2), "\xFF\xD8");
    EXPECT_NE(cut.substr(cut.size() - 2), "\xFF\xD9");
    EXPECT_EQ(whole.substr(whole.size() - 2), "\xFF\xD9");
}

TEST_F(Files, CanBeMissing) {
    set_scene("next file missing");
    stage->shoot();
    stage->wait();
    EXPECT_EQ(reports(*stage), Names{report("DSC00001.JPG")});
    EXPECT_TRUE(stage->files().empty());
}

TEST_F(Files, CanBeReportedOddly) {
    set_scene(
        "next file twice\n"
        "next file absolute\n"
        "next file named \"a|b%c\\nd\"\n"
        "next file named null\n"
        "next file number 2\n"
        "every file named last.JPG number 3");
    for (int shot = 0; shot < 7; ++shot) {
        stage->shoot();
    }
    stage->wait();
    EXPECT_EQ(reports(*stage),
              (Names{report("DSC00001.JPG"), report("DSC00001.JPG"),
                     report((stage->shots() / "DSC00002.JPG").string()), report("a|b%c\nd"),
                     report("null"), report("DSC00005.JPG", "0x00000002"),
                     report("last.JPG", "0x00000003"), report("last.JPG", "0x00000003")}));
    EXPECT_EQ(stage->files().size(), 7U);
}

TEST_F(Files, OfAPairCanComeInTheOtherOrderOrByHalf) {
    set_scene(
        "dial both\nset 0x0507 0\nnext pair reversed\nnext pair half\nnext pair reversed half");
    for (int shot = 0; shot < 4; ++shot) {
        stage->shoot();
    }
    stage->wait();
    EXPECT_EQ(reports(*stage),
              (Names{report("DSC00001.JPG"), report("DSC00001.ARW"), report("DSC00002.ARW"),
                     report("DSC00003.JPG"), report("DSC00004.ARW"), report("DSC00004.JPG")}));
}

TEST_F(Files, AreNotLeftHalfWrittenOnAFullDisk) {
    set_scene("picture 640x480");
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    // As small as a disk can get while the journal still has room.
    rlimit small = before;
    small.rlim_cur = 8000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    stage->shoot();
    EXPECT_TRUE(stage->recorder.got("OnWarning 0x00025104"));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, ignored);
    EXPECT_TRUE(stage->files().empty());
    EXPECT_TRUE(reports(*stage).empty());
}

TEST(OwnPictures, AreCopiedInTurnByName) {
    Stage stage;
    const auto own = stage.folder() / "own";
    std::filesystem::create_directory(own);
    std::ofstream(own / "b.jpeg") << "second";
    std::ofstream(own / "a.JPG") << "first";
    std::ofstream(own / "c.txt") << "no picture";
    std::ofstream(own / ".d.jpg") << "hidden";
    setenv("CAMERA_SIM_PICTURES", own.c_str(), 1);
    stage.open();
    stage.save_to(stage.shots());
    for (int shot = 0; shot < 3; ++shot) {
        stage.shoot();
    }
    stage.wait();
    EXPECT_EQ(content(stage.shots() / "DSC00001.JPG"), "first");
    EXPECT_EQ(content(stage.shots() / "DSC00002.JPG"), "second");
    EXPECT_EQ(content(stage.shots() / "DSC00003.JPG"), "first");
}

TEST(OwnPictures, ARawOfTheSameNameIsTheShots) {
    Stage stage("dial both\nset 0x0507 0");
    const auto own = stage.folder() / "own";
    std::filesystem::create_directory(own);
    std::ofstream(own / "a.JPG") << "first";
    std::ofstream(own / "a.dng") << "first raw";
    std::ofstream(own / "b.JPG") << "second, of which there is no RAW";
    setenv("CAMERA_SIM_PICTURES", own.c_str(), 1);
    stage.open();
    stage.save_to(stage.shots());
    for (int shot = 0; shot < 2; ++shot) {
        stage.shoot();
    }
    stage.wait();
    EXPECT_EQ(content(stage.shots() / "DSC00001.ARW"), "first raw");
    EXPECT_EQ(content(stage.shots() / "DSC00001.JPG"), "first");
    const std::string drawn = content(stage.shots() / "DSC00002.ARW");
    EXPECT_EQ(drawn.substr(0, 2), "II") << "the other one is drawn";
}

TEST(OwnPictures, APipeAmongThemIsNone) {
    Stage stage;
    const auto own = stage.folder() / "own";
    std::filesystem::create_directory(own);
    ASSERT_EQ(mkfifo((own / "a.JPG").c_str(), 0600), 0);
    std::filesystem::create_directory(own / "b.JPG");
    std::ofstream(own / "c.JPG") << "picture";
    std::filesystem::create_symlink(own / "c.JPG", own / "d.JPG");
    setenv("CAMERA_SIM_PICTURES", own.c_str(), 1);
    stage.open();
    stage.save_to(stage.shots());
    for (int shot = 0; shot < 3; ++shot) {
        stage.shoot();
    }
    stage.wait();
    EXPECT_EQ(stage.files(), (Names{"DSC00001.JPG", "DSC00002.JPG", "DSC00003.JPG"}));
    EXPECT_EQ(content(stage.shots() / "DSC00001.JPG"), "picture");
}

namespace {

// What a shot says with that as the user's own pictures; none comes.
std::string complaint_about(Stage& stage, const std::filesystem::path& own) {
    setenv("CAMERA_SIM_PICTURES", own.c_str(), 1);
    stage.open();
    stage.save_to(stage.shots());
    testing::internal::CaptureStderr();
    stage.shoot();
    EXPECT_TRUE(stage.recorder.got("OnWarning 0x00025104"));
    stage.wait();
    EXPECT_TRUE(stage.files().empty());
    return testing::internal::GetCapturedStderr();
}

}  // namespace

TEST(OwnPictures, ThatAreMissingGiveAWarning) {
    Stage stage;
    EXPECT_EQ(complaint_about(stage, stage.shots()),
              "camera-sim: there is no JPEG in the folder of CAMERA_SIM_PICTURES, " +
                  stage.shots().string() + "\n");
}

TEST(OwnPictures, WhoseFolderIsMissingAreToldOfNotTheFolderOfTheShots) {
    Stage stage;
    EXPECT_EQ(complaint_about(stage, "/nonexistent"),
              "camera-sim: the folder /nonexistent of CAMERA_SIM_PICTURES cannot be read: No such "
              "file or directory\n");
}
