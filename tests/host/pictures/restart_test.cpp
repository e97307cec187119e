// What a start tells of the time before it, and what `list` has of all times.

#include "tests/host/pictures/desk.h"

namespace {

using host::Code;
using host::Picture;

class Restart : public OpenDesk {
  protected:
    fs::path ledger() const {
        return folder_.path() / ".incoming/ledger";
    }
    // As an end of the program leaves it that came before the last word on a picture.
    Picture cut(const std::string& name, const std::string& content, const host::Place& how = {}) {
        Picture picture = desk_->bring(run_, name, content, how);
        const std::string lines = read_file(ledger());
        write_file(ledger(), lines.substr(0, lines.rfind("{\"placed\"")));
        return picture;
    }
    // The same before it was moved.
    Picture cut_earlier(const std::string& name, const std::string& content,
                        const host::Place& how = {}) {
        Picture picture = cut(name, content, how);
        fs::rename(picture.path, run_.staging / name);
        return picture;
    }

    const host::Place in_a_pair_{
        0, 41, "a tag", "below/very/deep/{shot:3}", "the pair", std::chrono::milliseconds(900)};
};

TEST_F(Restart, APictureThatWasNeverToldIsToldAsItWas) {
    const Picture told = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    const Picture untold =
        desk_->bring(run_, "DSC\xFF.JPG", sample_jpeg("2"),
                     {0, 9, "a \"tag\"\n", "below/{camera}", "", std::chrono::milliseconds(900)});
    desk_->tell(told);
    const std::string lines = read_file(ledger());
    for (const std::string& id : {told.id, std::string("no id of ours")}) {
        desk_->store().work(host::Told{id});
        EXPECT_EQ(read_file(ledger()), lines) << "nobody knows anything new";
    }
    EXPECT_EQ(restart().pictures, std::vector<Picture>{untold});
    EXPECT_EQ(restart().pictures, std::vector<Picture>{untold});
    desk_->tell(untold);
    EXPECT_TRUE(restart().pictures.empty());
}

TEST_F(Restart, PicturesAreToldInTheirOrder) {
    std::vector<Picture> pictures;
    for (const char* name : {"B.JPG", "A.JPG", "C.JPG"}) {
        pictures.push_back(desk_->bring(run_, name, sample_jpeg(name)));
    }
    EXPECT_EQ(restart().pictures, pictures);
}

TEST_F(Restart, ShotNumbersGoOn) {
    desk_->bring(run_, "DSC00000.JPG", sample_jpeg("0"));
    EXPECT_EQ(desk_->open().last_shot, 0U);
    EXPECT_EQ(restart().last_shot, 0U);
    run_ = desk_->open_run();
    desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"), {0, 41, "", "", "", {}});
    desk_->bring(run_, "DSC00002.JPG", sample_jpeg("2"), {0, 7, "", "", "", {}});
    EXPECT_EQ(restart().last_shot, 41U);
}

TEST_F(Restart, APictureThatWasTakenAwayBeforeItWasToldIsMentionedOnce) {
    const Picture deep = desk_->bring(run_, "DSC00001.ARW", sample_raw("1"), in_a_pair_);
    const Picture picture =
        desk_->bring(run_, "DSC00002.JPG", sample_jpeg("2"), {0, 42, "", "", "", {}});
    const Picture there = desk_->bring(run_, "DSC00003.JPG", sample_jpeg("3"), in_a_pair_);
    fs::remove(picture.path);
    fs::remove(deep.path);
    const auto problem = [](const Picture& gone) {
        return host::Problem{Code::picture_not_there,
                             "A picture was taken away before anybody was told of it: " + gone.path,
                             {},
                             gone.shot};
    };
    const auto opened = restart();
    EXPECT_EQ(opened.pictures, std::vector<Picture>{there});
    EXPECT_EQ(opened.problems, (std::vector<host::Problem>{problem(deep), problem(picture)}));
    fs::remove_all(folder_.path() / "below");
    EXPECT_EQ(restart().problems, std::vector<host::Problem>{problem(there)});
    EXPECT_FALSE(fs::exists(folder_.path() / "below")) << "nothing is made in its stead";
    EXPECT_TRUE(restart().problems.empty());
}

TEST_F(Restart, APictureThatWasMovedBeforeTheCutIsToldAsItWas) {
    const Picture raw = cut("DSC00001.ARW", sample_raw("1"), in_a_pair_);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("1"));
    const auto opened = restart();
    ASSERT_EQ(opened.pictures.size(), 2U);
    EXPECT_TRUE(opened.problems.empty());
    EXPECT_EQ(opened.pictures[0], raw);
    EXPECT_EQ(opened.pictures[1].path, (folder_.path() / "below/very/deep/041.JPG").string());
    EXPECT_EQ(opened.pictures[1].pair, "the pair");
    EXPECT_EQ(desk_->store().list("", "", 9), opened.pictures);
    desk_->tell(raw);
    EXPECT_EQ(restart().pictures, std::vector<Picture>{opened.pictures[1]});

    run_ = desk_->open_run();
    const Picture edited = cut("DSC00002.JPG", sample_jpeg("2"));
    std::ofstream(edited.path, std::ios::app) << "something behind it";
    EXPECT_EQ(restart().pictures, (std::vector<Picture>{opened.pictures[1], edited}));
}

TEST_F(Restart, APictureThatWasNotMovedBeforeTheCutIsPlacedAsItWas) {
    Picture picture = cut_earlier("DSC00001.JPG", sample_jpeg("1"), in_a_pair_);
    write_file(folder_.path() / "below/very/deep/041.xmp", "a stranger's");
    const auto opened = restart();
    ASSERT_EQ(opened.pictures.size(), 1U);
    EXPECT_TRUE(opened.problems.empty());
    EXPECT_EQ(opened.last_shot, 41U);
    picture.path = folder_.path() / "below/very/deep/041-2.JPG";
    picture.at = opened.pictures[0].at;
    EXPECT_EQ(opened.pictures[0], picture);
    EXPECT_EQ(read_file(picture.path), sample_jpeg("1"));
    EXPECT_EQ(restart().pictures, opened.pictures);
}

TEST_F(Restart, PicturesThatWereNotMovedArePlacedInTheirOrder) {
    host::pictures::Options options = impatient();
    options.time_of_day = [now = std::chrono::milliseconds(0)]() mutable {
        return ++now;
    };
    desk_ = nullptr;
    desk_ = std::make_unique<Desk>(folder_.path(), options);
    desk_->open();
    run_ = desk_->open_run();
    const std::vector<std::string> names{"C.JPG", "A.JPG", "F.JPG", "B.JPG", "E.JPG", "D.JPG"};
    for (const std::string& name : names) {
        cut_earlier(name, sample_jpeg(name));
    }
    std::vector<std::string> placed;
    for (const Picture& picture : restart().pictures) {
        placed.push_back(picture.camera_name);
    }
    EXPECT_EQ(placed, names);
}

TEST_F(Restart, AStrangersEmptyFileIsNotTakenForOurs) {
    const Picture picture = cut_earlier("DSC00001.JPG", sample_jpeg("1"));
    write_file(picture.path, "");
    EXPECT_EQ(names_of(restart().pictures, folder_.path()),
              std::set<std::string>{"DSC00001-2.JPG"});
    EXPECT_TRUE(fs::exists(picture.path));
}

TEST_F(Restart, AnotherFileInTheStagingFolderIsAnotherPicture) {
    const Picture cut_one = cut_earlier("DSC00001.JPG", sample_jpeg("1"), in_a_pair_);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("another"));
    const auto opened = restart();
    ASSERT_EQ(opened.pictures.size(), 1U);
    EXPECT_TRUE(opened.problems.empty());
    EXPECT_NE(opened.pictures[0].id, cut_one.id);
    EXPECT_EQ(opened.pictures[0].shot, std::nullopt);
    EXPECT_EQ(opened.pictures[0].path, (folder_.path() / "DSC00001.JPG").string());

    // Also where one of the number that the first one had is in its place, and is not that.
    run_ = desk_->open_run();
    const Picture moved = cut("DSC00002.JPG", sample_jpeg("2"));
    std::ofstream(moved.path, std::ios::app) << "something behind it";
    write_file(run_.staging / "DSC00002.JPG", sample_jpeg("another"));
    EXPECT_EQ(names_of(restart().pictures, folder_.path()),
              (std::set<std::string>{"DSC00001.JPG", "DSC00002-2.JPG"}));
}

TEST_F(Restart, APictureThatIsNowhereAfterTheCutIsMentionedOnce) {
    const auto nowhere = [](const Picture& picture) {
        return std::vector<host::Problem>{{Code::picture_not_there,
                                           "A picture was being brought to " + picture.path +
                                               " when the program ended, and is not there.",
                                           {},
                                           picture.shot}};
    };
    const Picture gone = cut("DSC00001.JPG", sample_jpeg("1"), in_a_pair_);
    fs::remove_all(folder_.path() / "below");
    const auto opened = restart();
    EXPECT_TRUE(opened.pictures.empty());
    EXPECT_EQ(opened.problems, nowhere(gone));
    EXPECT_FALSE(fs::exists(folder_.path() / "below")) << "nothing is made in its stead";
    EXPECT_TRUE(restart().problems.empty());

    // A stranger's file in its place.
    run_ = desk_->open_run();
    const Picture replaced = cut("DSC00002.JPG", sample_jpeg("2"));
    write_file(folder_.path() / "mine", "mine");
    fs::rename(folder_.path() / "mine", replaced.path);
    EXPECT_EQ(restart().problems, nowhere(replaced));
    EXPECT_TRUE(restart().problems.empty());
    EXPECT_EQ(read_file(replaced.path), "mine");
}

TEST_F(Restart, AFolderThatWasMovedKeepsItsPictures) {
    const Picture picture = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    desk_ = nullptr;
    TemporaryFolder elsewhere;
    const fs::path moved = elsewhere.path() / "moved";
    fs::rename(folder_.path(), moved);
    Desk desk(moved);
    const auto opened = desk.open();
    ASSERT_EQ(opened.pictures.size(), 1U);
    EXPECT_EQ(opened.pictures[0].id, picture.id);
    EXPECT_EQ(opened.pictures[0].path, (moved / "DSC00001.JPG").string());
}

TEST_F(Restart, ALedgerThatIsGoneCostsNoPicture) {
    const Picture picture = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    write_file(run_.staging / "DSC00002.JPG", sample_jpeg("2"));
    fs::remove(ledger());
    EXPECT_EQ(names_of(restart().pictures, folder_.path()), std::set<std::string>{"DSC00002.JPG"});
    EXPECT_EQ(read_file(picture.path), sample_jpeg("1"));
}

TEST_F(Restart, ALedgerFullOfGarbageCostsNoPicture) {
    const Picture before = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    std::ofstream(ledger(), std::ios::app | std::ios::binary)
        << std::string(70000, '{') << "\n"
        << std::string(10, '\0') << "\xFF\n{\"placing\":\"" << before.id << "\"}\n{\"pla";
    const auto opened = restart();
    EXPECT_EQ(opened.pictures, std::vector<Picture>{before});
    const Picture behind = desk_->bring(desk_->open_run(), "DSC00002.JPG", sample_jpeg("2"));
    EXPECT_EQ(restart().pictures, (std::vector<Picture>{before, behind}));
}

TEST_F(Restart, TwoFoldersKeepTheirOwnLedgers) {
    TemporaryFolder second;
    desk_->ask<host::FolderOpened>(host::OpenFolder{desk_->next_ticket(), second.path().string()});
    const Picture picture = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    desk_->tell(picture);
    EXPECT_TRUE(desk_->store().list("", "", 10).empty());
    EXPECT_EQ(desk_->store().list(folder_.path().string(), "", 10), std::vector<Picture>{picture});
    EXPECT_TRUE(restart().pictures.empty());
}

TEST_F(Restart, TheListIsOldestFirstInPieces) {
    std::vector<Picture> all;
    for (int number = 1; number <= 5; ++number) {
        all.push_back(
            desk_->bring(run_, "DSC" + std::to_string(number) + ".JPG", sample_jpeg("x")));
    }
    restart();
    const auto list = [&](const std::string& after, std::size_t limit) {
        return desk_->store().list(folder_.path().string(), after, limit);
    };
    EXPECT_EQ(list("", 100), all);
    EXPECT_EQ(list("", 2), (std::vector<Picture>{all[0], all[1]}));
    EXPECT_EQ(list(all[1].id, 2), (std::vector<Picture>{all[2], all[3]}));
    EXPECT_TRUE(list(all[4].id, 2).empty());
    EXPECT_EQ(list("no id of ours", 100), all);
    EXPECT_TRUE(list("", 0).empty());
    EXPECT_TRUE(desk_->store().list("/nowhere", "", 10).empty());
}

}  // namespace
