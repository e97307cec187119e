// What nobody has reported is brought in from the staging folder.

#include <sys/stat.h>

#include "tests/host/pictures/desk.h"

namespace {

using host::Code;

using Sweeping = OpenDesk;

TEST_F(Sweeping, EveryFileIsBroughtInOldestFirstAndSaysSo) {
    const std::vector<std::string> oldest_first{"E.JPG", "A.JPG", "D.JPG", "B.txt", "C.JPG"};
    for (std::size_t age = 0; age < oldest_first.size(); ++age) {
        write_file(run_.staging / oldest_first[age], sample_jpeg());
        // The last two are of one moment.
        fs::last_write_time(run_.staging / oldest_first[age],
                            fs::file_time_type() + std::chrono::hours(age < 4 ? age : 3));
    }
    const auto swept = desk_->sweep(run_);
    EXPECT_TRUE(swept.problems.empty());
    ASSERT_EQ(swept.pictures.size(), oldest_first.size());
    for (std::size_t age = 0; age < oldest_first.size(); ++age) {
        const host::Picture& picture = swept.pictures[age];
        const bool is_other = age == 3;
        EXPECT_EQ(picture, (host::Picture{picture.id,
                                          {},
                                          "",
                                          picture.id,
                                          is_other ? host::Kind::other : host::Kind::developed,
                                          is_other ? host::Format::other : host::Format::jpeg,
                                          folder_.path() / oldest_first[age],
                                          oldest_first[age],
                                          sample_jpeg().size(),
                                          true,
                                          picture.at,
                                          {},
                                          true}));
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
    const std::string there = " was left where it is: " + run_.staging.string() + "/";
    std::set<std::string> said;
    for (const host::Problem& problem : swept.problems) {
        EXPECT_EQ(problem.code, Code::picture_not_placed);
        said.insert(problem.text);
    }
    EXPECT_EQ(said, (std::set<std::string>{"Not a picture but a link" + there + "link.JPG",
                                           "Not a picture but a folder" + there + "folder",
                                           "Not a picture but a hidden file" + there + ".hidden",
                                           "Not a picture but something else" + there + "pipe"}));
    EXPECT_TRUE(desk_->sweep(run_, true).problems.empty());
    EXPECT_TRUE(fs::exists(lock())) << "for as long as its folder";
    EXPECT_TRUE(restart().problems.empty());
    EXPECT_EQ(read_file(run_.staging / "folder/inside.JPG"), "inside");
    EXPECT_EQ(read_file(run_.staging / ".hidden"), "hidden");
    EXPECT_EQ(fs::read_symlink(run_.staging / "link.JPG"), folder_.path() / "mine");
}

TEST_F(Sweeping, MoreThanAHundredOthersAreToldNextTime) {
    for (int number = 0; number < 101; ++number) {
        fs::create_directory(run_.staging / std::to_string(number));
    }
    EXPECT_EQ(desk_->sweep(run_, false).problems.size(), 100U);
    EXPECT_EQ(desk_->sweep(run_, false).problems.size(), 1U);
    EXPECT_TRUE(desk_->sweep(run_, false).problems.empty());
}

TEST_F(Sweeping, ADamagedFileIsBroughtInWithAProblem) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1").substr(0, 80));
    const auto swept = desk_->sweep(run_);
    ASSERT_EQ(swept.pictures.size(), 1U);
    EXPECT_FALSE(swept.pictures[0].whole);
    EXPECT_EQ(text_of(swept.problems, Code::picture_damaged),
              "A picture is damaged: " + swept.pictures[0].path);
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
    auto examined = desk_->examine(run_, "DSC00001.JPG");
    const OpenedRun other = desk_->open_run();
    for (const OpenedRun& run : {run_, other}) {
        write_file(run.staging / "DSC00002.JPG", sample_jpeg("2"));
    }
    desk_->examine(other, "DSC00002.JPG");
    EXPECT_EQ(names_of(desk_->sweep(run_, false).pictures, folder_.path()),
              std::set<std::string>{"DSC00002.JPG"});
    EXPECT_EQ(desk_->place(examined).path, (folder_.path() / "DSC00001.JPG").string());

    // Not when the worker has ended: then it is brought in now, and not once more later.
    write_file(run_.staging / "DSC00003.JPG", sample_jpeg("3"));
    examined = desk_->examine(run_, "DSC00003.JPG");
    EXPECT_EQ(desk_->sweep(run_).pictures.size(), 1U);
    EXPECT_EQ(
        desk_->ask<host::NotPlaced>(host::Place{examined.ticket, 7, "", "", "p", {}}).problem,
        (host::Problem{
            Code::picture_not_there, "A picture is not where it was examined any more.", {}, 7}));
    EXPECT_EQ(desk_->examine(other, "DSC00002.JPG").verdict, host::Verdict::reported_before);
}

TEST_F(Sweeping, ADeletedStagingFolderHasNothing) {
    fs::remove_all(run_.staging);
    const auto swept = desk_->sweep(run_);
    EXPECT_TRUE(swept.pictures.empty());
    EXPECT_TRUE(swept.problems.empty());
    EXPECT_FALSE(fs::exists(lock()));
}

TEST_F(Sweeping, AnUnknownRunHasNothing) {
    EXPECT_TRUE(
        desk_->ask<host::RunSwept>(host::SweepRun{7, "run-unknown", true}).pictures.empty());
}

TEST_F(Sweeping, WhatIsNotARunsIsNotTouched) {
    const fs::path incoming = folder_.path() / ".incoming";
    TemporaryFolder elsewhere;
    write_file(elsewhere.path() / "DSC00001.JPG", sample_jpeg());
    fs::create_directory_symlink(elsewhere.path(), incoming / "run-link");
    fs::create_directory(incoming / "notes");
    for (const char* name : {"DSC00001.JPG", "run-file"}) {
        write_file(incoming / name, "a stranger's");
    }
    const auto opened = restart();
    EXPECT_TRUE(opened.pictures.empty());
    EXPECT_TRUE(opened.problems.empty());
    EXPECT_TRUE(fs::exists(incoming / "run-link/DSC00001.JPG"));
    EXPECT_TRUE(fs::exists(incoming / "notes"));
    for (const char* name : {"DSC00001.JPG", "run-file"}) {
        EXPECT_EQ(read_file(incoming / name), "a stranger's");
    }
}

}  // namespace
