// What nobody has reported is brought in from the staging folder.

#include <sys/stat.h>

#include "tests/host/pictures/desk.h"

namespace {

using host::Code;

using Sweeping = OpenDesk;

TEST_F(Sweeping, EveryFileIsBroughtInAndSaysSo) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1"));
    write_file(run_.staging / "C0001.MP4", "a movie");
    const auto swept = desk_->sweep(run_);
    EXPECT_EQ(names_of(swept.pictures, folder_.path()),
              (std::set<std::string>{"DSC00001.JPG", "C0001.MP4"}));
    for (const host::Picture& picture : swept.pictures) {
        EXPECT_TRUE(picture.recovered);
        EXPECT_EQ(picture.shot, std::nullopt);
        EXPECT_FALSE(picture.pair.empty());
    }
    EXPECT_FALSE(fs::exists(run_.staging));
    EXPECT_FALSE(fs::exists(lock()));
}

TEST_F(Sweeping, HalvesOfOneStemAreAPair) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1"));
    write_file(run_.staging / "dsc00001.ARW", sample_raw("1"));
    write_file(run_.staging / "DSC00002.JPG", sample_jpeg("2"));
    write_file(folder_.path() / "DSC00001.xmp", "a stranger's");
    std::map<std::string, std::string> pairs;
    for (const host::Picture& picture : desk_->sweep(run_).pictures) {
        pairs[fs::path(picture.path).filename().string()] = picture.pair;
    }
    const std::string jpeg = pairs.count("DSC00001-2.JPG") > 0 ? "DSC00001-2" : "dsc00001-2";
    ASSERT_EQ(pairs.count(jpeg + ".JPG") + pairs.count(jpeg + ".ARW"), 2U);
    EXPECT_EQ(pairs[jpeg + ".JPG"], pairs[jpeg + ".ARW"]);
    EXPECT_NE(pairs[jpeg + ".JPG"], pairs["DSC00002.JPG"]);
}

TEST_F(Sweeping, AHalfFindsTheOneThatWasPlacedBeforeTheCut) {
    const host::Picture first = desk_->bring(run_, "DSC00001.ARW", sample_raw("1"),
                                             {0, 7, "portrait", "{shot}", "the pair", {}});
    desk_->tell(first);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1"));
    const auto opened = restart();
    ASSERT_EQ(opened.pictures.size(), 1U);
    EXPECT_EQ(opened.pictures[0].path, (folder_.path() / "7.JPG").string());
    EXPECT_EQ(opened.pictures[0].pair, "the pair");
    EXPECT_EQ(opened.pictures[0].shot, std::uint64_t{7});
    EXPECT_EQ(opened.pictures[0].tag, "portrait");
}

TEST_F(Sweeping, ASecondFileOfTheSameKindIsNoHalf) {
    desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"), {0, 7, "", "", "the pair", {}});
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("2"));
    const auto swept = desk_->sweep(run_);
    ASSERT_EQ(swept.pictures.size(), 1U);
    EXPECT_NE(swept.pictures[0].pair, "the pair");
    EXPECT_EQ(swept.pictures[0].shot, std::nullopt);
    EXPECT_EQ(swept.pictures[0].path, (folder_.path() / "DSC00001-2.JPG").string());
}

TEST_F(Sweeping, LinksFoldersAndHiddenNamesStayAndAreToldOnce) {
    write_file(folder_.path() / "mine", "mine");
    fs::create_symlink(folder_.path() / "mine", run_.staging / "link.JPG");
    fs::create_directory(run_.staging / "folder");
    write_file(run_.staging / "folder/inside.JPG", "inside");
    write_file(run_.staging / ".hidden", "hidden");
    ASSERT_EQ(::mkfifo((run_.staging / "pipe").c_str(), 0600), 0);
    const auto swept = desk_->sweep(run_, false);
    EXPECT_TRUE(swept.pictures.empty());
    ASSERT_EQ(swept.problems.size(), 4U);
    for (const char* name : {"link.JPG", "folder", ".hidden", "pipe"}) {
        const auto told = std::count_if(
            swept.problems.begin(), swept.problems.end(), [&](const host::Problem& problem) {
                return problem.text.find(run_.staging / name) != std::string::npos;
            });
        EXPECT_EQ(told, 1) << name;
    }
    EXPECT_TRUE(desk_->sweep(run_, true).problems.empty());
    EXPECT_TRUE(restart().problems.empty());
    EXPECT_EQ(read_file(run_.staging / "folder/inside.JPG"), "inside");
    EXPECT_EQ(read_file(run_.staging / ".hidden"), "hidden");
    EXPECT_EQ(fs::read_symlink(run_.staging / "link.JPG"), folder_.path() / "mine");
}

TEST_F(Sweeping, ADamagedFileIsBroughtInWithAProblem) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1").substr(0, 80));
    const auto swept = desk_->sweep(run_);
    ASSERT_EQ(swept.pictures.size(), 1U);
    EXPECT_FALSE(swept.pictures[0].whole);
    EXPECT_NE(text_of(swept.problems, Code::picture_damaged).find(swept.pictures[0].path),
              std::string::npos);
}

TEST_F(Sweeping, AFileThatMayBeOnItsWayIsLeftToALivingWorker) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1").substr(0, 80));
    write_file(run_.staging / "DSC00002.JPG", sample_jpeg("2"));
    EXPECT_EQ(names_of(desk_->sweep(run_, false).pictures, folder_.path()),
              std::set<std::string>{"DSC00002.JPG"});
    EXPECT_TRUE(fs::exists(run_.staging / "DSC00001.JPG"));
}

TEST_F(Sweeping, AFileThatIsAboutToBePlacedIsLeft) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1"));
    const auto examined = desk_->examine(run_, "DSC00001.JPG");
    EXPECT_TRUE(desk_->sweep(run_, false).pictures.empty());
    EXPECT_EQ(desk_->place(examined).path, (folder_.path() / "DSC00001.JPG").string());
}

TEST_F(Sweeping, ADeletedStagingFolderHasNothing) {
    fs::remove_all(run_.staging);
    const auto swept = desk_->sweep(run_);
    EXPECT_TRUE(swept.pictures.empty());
    EXPECT_TRUE(swept.problems.empty());
}

TEST_F(Sweeping, AnUnknownRunHasNothing) {
    EXPECT_TRUE(
        desk_->ask<host::RunSwept>(host::SweepRun{7, "run-unknown", true}).pictures.empty());
}

TEST_F(Sweeping, WhatIsNotARunsIsNotTouched) {
    fs::create_directory(folder_.path() / ".incoming/notes");
    write_file(folder_.path() / ".incoming/DSC00001.JPG", "a stranger's");
    EXPECT_TRUE(restart().pictures.empty());
    EXPECT_TRUE(fs::exists(folder_.path() / ".incoming/notes"));
    EXPECT_EQ(read_file(folder_.path() / ".incoming/DSC00001.JPG"), "a stranger's");
}

}  // namespace
