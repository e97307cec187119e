// Files from the staging folder to their place: where they go and what they are called.

#include <regex>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/pictures/desk.h"

namespace {

class Placing : public OpenDesk {
  protected:
    std::string name_of(const host::Picture& picture) const {
        return fs::path(picture.path).lexically_relative(folder_.path()).string();
    }
    // Under a template, with a pair of its own.
    std::string named(const std::string& camera_name, const std::string& name_template,
                      std::optional<std::uint64_t> shot = {}) {
        host::Place how;
        how.name = name_template;
        how.shot = shot;
        return name_of(desk_->bring(run_, camera_name, sample_jpeg(camera_name), how));
    }
};

TEST_F(Placing, AFileComesWholeUnderTheCamerasName) {
    const std::string content = sample_jpeg("one");
    const host::Picture picture = desk_->bring(run_, "DSC00001.JPG", content);
    EXPECT_EQ(name_of(picture), "DSC00001.JPG");
    EXPECT_EQ(files_in(folder_.path()),
              (std::map<std::string, std::string>{{"DSC00001.JPG", content}}));
    EXPECT_TRUE(fs::is_empty(run_.staging));
}

TEST_F(Placing, ThePictureSaysWhatItIs) {
    host::Place how;
    how.shot = 7;
    how.tag = "portrait";
    how.pair = "the pair";
    how.after = std::chrono::milliseconds(1234);
    const host::Picture picture = desk_->bring(run_, "DSC00001.ARW", sample_raw("one"), how);
    EXPECT_EQ(picture.shot, std::uint64_t{7});
    EXPECT_EQ(picture.tag, "portrait");
    EXPECT_EQ(picture.pair, "the pair");
    EXPECT_EQ(picture.kind, host::Kind::raw);
    EXPECT_EQ(picture.format, host::Format::arw);
    EXPECT_EQ(picture.camera_name, "DSC00001.ARW");
    EXPECT_EQ(picture.bytes, sample_raw("one").size());
    EXPECT_TRUE(picture.whole);
    EXPECT_EQ(picture.after, std::chrono::milliseconds(1234));
    EXPECT_FALSE(picture.recovered);
    EXPECT_TRUE(
        std::regex_match(picture.at, std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)")))
        << picture.at;
    EXPECT_TRUE(std::regex_match(picture.id, std::regex("[0-9a-f]{16}"))) << picture.id;
    EXPECT_NE(picture.id.substr(0, 8), "00000000") << "all of it is drawn";
}

TEST_F(Placing, NothingIsOverwritten) {
    write_file(folder_.path() / "DSC00001.JPG", "a stranger's");
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("one"))), "DSC00001-2.JPG");
    EXPECT_EQ(read_file(folder_.path() / "DSC00001.JPG"), "a stranger's");
    EXPECT_EQ(read_file(folder_.path() / "DSC00001-2.JPG"), sample_jpeg("one"));
}

TEST_F(Placing, ALinkToNowhereIsNotOverwritten) {
    fs::create_symlink("nowhere", folder_.path() / "DSC00001.JPG");
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("one"))), "DSC00001-2.JPG");
    EXPECT_TRUE(fs::is_symlink(folder_.path() / "DSC00001.JPG"));
}

TEST_F(Placing, AStemIsTakenByAFileOfAnyKindAndCase) {
    write_file(folder_.path() / "dsc00001.xmp", "");
    write_file(folder_.path() / "DSC00001-2", "");
    fs::create_directory(folder_.path() / "Dsc00001-3.folder");
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("one"))), "DSC00001-4.JPG");
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("two"))), "DSC00001-5.JPG");
    write_file(folder_.path() / "az\xC3\xA9_.xmp", "");
    EXPECT_EQ(named("AZ\xC3\x89_.JPG", ""), "AZ\xC3\x89_-2.JPG");
}

TEST_F(Placing, AnotherStemIsNotTakenByALongerOne) {
    write_file(folder_.path() / "DSC000011.JPG", "");
    write_file(folder_.path() / "DSC00001-x.JPG", "");
    write_file(folder_.path() / "DSC00001.JPG.xmp", "");
    for (const char* number : {"-0", "-1", "-02", "-", "--2", "_2", "-2x"}) {
        write_file(folder_.path() / ("DSC00001" + std::string(number)), "");
    }
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("one"))), "DSC00001.JPG");
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.JPG", sample_jpeg("two"))), "DSC00001-2.JPG");
}

TEST_F(Placing, TheHalvesOfAPairShareAStem) {
    write_file(folder_.path() / "DSC00001.JPG", "a stranger's");
    host::Place how;
    how.pair = "one pair";
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00001.ARW", sample_raw("one"), how)),
              "DSC00001-2.ARW");
    EXPECT_EQ(name_of(desk_->bring(run_, "dsc00001.jpg", sample_jpeg("one"), how)),
              "DSC00001-2.jpg");
}

TEST_F(Placing, AHalfWhoseNameAStrangerTookKeepsItsPair) {
    host::Place how;
    how.pair = "one pair";
    desk_->bring(run_, "DSC00001.ARW", sample_raw("one"), how);
    write_file(folder_.path() / "dsc00001.jpg", "a stranger's");
    const host::Picture half = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("one"), how);
    EXPECT_EQ(name_of(half), "DSC00001-2.JPG");
    EXPECT_EQ(half.pair, "one pair");
    EXPECT_EQ(read_file(folder_.path() / "dsc00001.jpg"), "a stranger's");
}

TEST_F(Placing, ATemplateNamesTheFile) {
    EXPECT_EQ(named("DSC00001.JPG", "wedding-{shot:3}-{camera}", 12), "wedding-012-DSC00001.JPG");
    EXPECT_EQ(named("DSC00002.JPG", "{shot}", 13), "13.JPG");
    EXPECT_EQ(named("DSC00003.JPG", "{shot}"), "0.JPG");
}

TEST_F(Placing, ATemplatesFoldersAreMadeBelow) {
    const mode_t before = ::umask(027);
    EXPECT_EQ(named("DSC00001.JPG", "a/b/c/{camera}"), "a/b/c/DSC00001.JPG");
    EXPECT_EQ(named("DSC00001.JPG", "a/b/c/{camera}"), "a/b/c/DSC00001-2.JPG");
    ::umask(before);
    EXPECT_EQ(files_in(folder_.path()),
              (std::map<std::string, std::string>{
                  {"a/b/c/DSC00001.JPG", sample_jpeg("DSC00001.JPG")},
                  {"a/b/c/DSC00001-2.JPG", sample_jpeg("DSC00001.JPG")}}));
    struct stat facts {};
    ASSERT_EQ(::stat((folder_.path() / "a/b").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0750U);
}

TEST_F(Placing, ALinkIsNoFolderBelow) {
    TemporaryFolder elsewhere;
    fs::create_symlink(elsewhere.path(), folder_.path() / "a");
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("one"));
    const auto examined = desk_->examine(run_, "DSC00001.JPG");
    const auto refused =
        desk_->ask<host::NotPlaced>(host::Place{examined.ticket, {}, "", "a/{camera}", "p", {}});
    EXPECT_EQ(refused.problem.code, host::Code::picture_not_placed);
    EXPECT_NE(refused.problem.text.find(run_.staging / "DSC00001.JPG"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(elsewhere.path()));
    EXPECT_EQ(read_file(run_.staging / "DSC00001.JPG"), sample_jpeg("one"));
}

TEST_F(Placing, ARunningNumberCountsPairsAndGoesOnAfterARestart) {
    named("DSC00006.JPG", "{camera}");
    host::Place how;
    how.name = "{n:4}";
    how.pair = "first";
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00007.ARW", sample_raw("7"), how)), "0001.ARW");
    EXPECT_EQ(name_of(desk_->bring(run_, "DSC00007.JPG", sample_jpeg("7"), how)), "0001.JPG");
    EXPECT_EQ(named("DSC00008.JPG", "{n}"), "2.JPG");
    desk_->sweep(run_);
    desk_->store().work(host::CloseFolder{folder_.path().string()});

    Desk next(folder_.path());
    next.open();
    how.pair = "third";
    EXPECT_EQ(name_of(next.bring(next.open_run(), "DSC00009.JPG", sample_jpeg("9"), how)),
              "0003.JPG");
}

TEST_F(Placing, ATemplateThatNobodyHasLookedAtLosesNoPicture) {
    EXPECT_EQ(named("DSC00001.JPG", "../{camera}"), "DSC00001.JPG");
    EXPECT_EQ(named("DSC00002.JPG", "{unknown}"), "DSC00002.JPG");
}

TEST_F(Placing, ANameThatIsTooLongIsShortened) {
    const std::string longest = std::string(251, 'x') + ".JPG";
    const std::string name = name_of(desk_->bring(run_, longest, sample_jpeg("long")));
    // Room is kept for a number of ten digits.
    EXPECT_EQ(name, std::string(240, 'x') + ".JPG");
    EXPECT_EQ(read_file(folder_.path() / name), sample_jpeg("long"));
    EXPECT_EQ(name_of(desk_->bring(run_, longest, sample_jpeg("again"))),
              std::string(240, 'x') + "-2.JPG");
    EXPECT_EQ(named(std::string(239, 'x') + "\xC3\xA9\xC3\xA9\xC3\xA9.JPG", ""),
              std::string(239, 'x') + ".JPG")
        << "not in the middle of a letter";
    EXPECT_EQ(named(std::string(240, 'y') + ".JPG", ""), std::string(240, 'y') + ".JPG");
}

TEST_F(Placing, ANameThatIsNotUtf8IsKeptByteForByte) {
    const std::string odd = "DSC\xFF%41\"\n.JPG";
    const host::Picture picture = desk_->bring(run_, odd, sample_jpeg("odd"));
    EXPECT_EQ(picture.path, folder_.path().string() + "/" + odd);
    EXPECT_EQ(desk_->store().list("", "", 10), std::vector<host::Picture>{picture});
}

TEST_F(Placing, AFileThatChangedSinceItWasExaminedIsLookedAtAgain) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("one").substr(0, 30));
    const auto examined = desk_->examine(run_, "DSC00001.JPG");
    EXPECT_FALSE(examined.whole);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("one"));
    const host::Picture picture = desk_->place(examined);
    EXPECT_TRUE(picture.whole);
    EXPECT_EQ(picture.bytes, sample_jpeg("one").size());
}

TEST_F(Placing, AFileThatWasReplacedSinceItWasExaminedIsNotTaken) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("one"));
    const auto examined = desk_->examine(run_, "DSC00001.JPG");
    write_file(run_.staging / "other", sample_jpeg("another"));
    fs::rename(run_.staging / "other", run_.staging / "DSC00001.JPG");
    const auto refused =
        desk_->ask<host::NotPlaced>(host::Place{examined.ticket, {}, "", "", "p", {}});
    EXPECT_EQ(refused.problem,
              (host::Problem{host::Code::picture_not_there,
                             "A picture that was reported is not there any more: " +
                                 (run_.staging / "DSC00001.JPG").string(),
                             {},
                             {}}));
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, host::Verdict::there);
}

TEST_F(Placing, ADamagedFileIsPlacedToo) {
    const std::string half = sample_jpeg("one").substr(0, 100);
    const host::Picture picture = desk_->bring(run_, "DSC00001.JPG", half);
    EXPECT_FALSE(picture.whole);
    EXPECT_EQ(read_file(picture.path), half);
}

TEST_F(Placing, AFolderThatHasGoneGetsNothingInItsStead) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("one"));
    const auto examined = desk_->examine(run_, "DSC00001.JPG");
    TemporaryFolder elsewhere;
    fs::rename(folder_.path(), elsewhere.path() / "moved");
    const auto refused =
        desk_->ask<host::NotPlaced>(host::Place{examined.ticket, {}, "", "", "p", {}});
    EXPECT_EQ(refused.problem.code, host::Code::folder_gone);
    const fs::path now = elsewhere.path() / "moved/.incoming" / run_.name / "DSC00001.JPG";
    EXPECT_EQ(refused.problem.text,
              "The folder was moved, deleted or ejected. A picture is now " + now.string());
    EXPECT_EQ(read_file(now), sample_jpeg("one"));
    EXPECT_FALSE(fs::exists(folder_.path()));
}

TEST_F(Placing, AMovieIsPlacedAsAnother) {
    const host::Picture movie = desk_->bring(run_, "C0001.MP4", "anything");
    EXPECT_EQ(movie.kind, host::Kind::other);
    EXPECT_EQ(movie.format, host::Format::other);
    EXPECT_EQ(name_of(movie), "C0001.MP4");
}

}  // namespace
