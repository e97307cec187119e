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
};

TEST_F(Restart, APictureThatWasNeverToldIsToldAsItWas) {
    const Picture told = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    const Picture untold =
        desk_->bring(run_, "DSC\xFF.JPG", sample_jpeg("2"),
                     {0, 9, "a \"tag\"\n", "below/{camera}", "", std::chrono::milliseconds(900)});
    desk_->tell(told);
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
    desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"), {0, 41, "", "", "", {}});
    desk_->bring(run_, "DSC00002.JPG", sample_jpeg("2"), {0, 7, "", "", "", {}});
    EXPECT_EQ(restart().last_shot, 41U);
}

TEST_F(Restart, APictureThatWasTakenAwayBeforeItWasToldIsMentionedOnce) {
    const Picture picture = desk_->bring(run_, "DSC00001.JPG", sample_jpeg("1"));
    fs::remove(picture.path);
    const auto opened = restart();
    EXPECT_TRUE(opened.pictures.empty());
    EXPECT_NE(text_of(opened.problems, Code::picture_not_there).find(picture.path),
              std::string::npos);
    EXPECT_TRUE(restart().problems.empty());
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
