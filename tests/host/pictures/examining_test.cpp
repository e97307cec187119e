// Is what a worker reports there, and is it a picture?

#include <sys/stat.h>

#include "tests/host/pictures/desk.h"

namespace {

using host::Verdict;

class Examining : public OpenDesk {
  protected:
    host::Examined examine_path(const std::string& path) {
        return desk_->ask<host::Examined>(host::Examine{desk_->next_ticket(), run_.name, path});
    }
};

TEST_F(Examining, AFileSaysWhatItIs) {
    write_file(run_.staging / "DSC00001.ARW", sample_raw("one"));
    const auto found = desk_->examine(run_, "DSC00001.ARW");
    EXPECT_EQ(found.verdict, Verdict::there);
    EXPECT_EQ(found.camera_name, "DSC00001.ARW");
    EXPECT_EQ(found.stem, "DSC00001");
    EXPECT_EQ(found.kind, host::Kind::raw);
    EXPECT_EQ(found.format, host::Format::arw);
    EXPECT_EQ(found.bytes, sample_raw("one").size());
    EXPECT_TRUE(found.whole);
    EXPECT_EQ(found.why, "");
    EXPECT_GT(found.room.value_or(0), 0U);
    EXPECT_EQ(read_file(run_.staging / "DSC00001.ARW"), sample_raw("one"));
}

TEST_F(Examining, AFileWithSomethingMissingSaysWhat) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("one").substr(0, 150));
    const auto found = desk_->examine(run_, "DSC00001.JPG");
    EXPECT_EQ(found.verdict, Verdict::there);
    EXPECT_FALSE(found.whole);
    EXPECT_EQ(found.why, "it ends before its picture does");
}

TEST_F(Examining, AnEmptyFileIsNotWhole) {
    write_file(run_.staging / "DSC00001.JPG", "");
    const auto found = desk_->examine(run_, "DSC00001.JPG");
    EXPECT_EQ(found.verdict, Verdict::there);
    EXPECT_FALSE(found.whole);
    EXPECT_EQ(found.why, "it is empty");
}

TEST_F(Examining, AFileReportedTwiceCountsOnce) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg());
    const auto first = desk_->examine(run_, "DSC00001.JPG");
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::reported_before);
    // Others that wait beside it.
    const OpenedRun other = desk_->open_run();
    for (const fs::path& file : {run_.staging / "DSC00002.JPG", other.staging / "DSC00001.JPG"}) {
        write_file(file, sample_jpeg());
    }
    EXPECT_EQ(desk_->examine(run_, "DSC00002.JPG").verdict, Verdict::there);
    EXPECT_EQ(desk_->examine(other, "DSC00001.JPG").verdict, Verdict::there);
    desk_->place(first);
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::reported_before);
}

// Some disks keep no number for a file.
TEST_F(Examining, AFileWithAnotherNumberIsKnownByItsSizeAndItsTime) {
    const fs::path file = run_.staging / "DSC00001.JPG";
    const auto now = fs::file_time_type::clock::now();
    const auto write_anew = [&](const std::string& content, fs::file_time_type time) {
        if (fs::exists(file)) {
            // Its number is not given away.
            fs::rename(file, folder_.path() / std::to_string(desk_->next_ticket()));
        }
        write_file(file, content);
        fs::last_write_time(file, time);
        return desk_->examine(run_, "DSC00001.JPG");
    };
    EXPECT_EQ(write_anew(sample_jpeg("1"), now).verdict, Verdict::there);
    const auto other_time = write_anew(sample_jpeg("2"), now - std::chrono::seconds(1));
    EXPECT_EQ(other_time.verdict, Verdict::there);
    const auto other_size = write_anew(sample_jpeg("34"), now);
    EXPECT_EQ(other_size.verdict, Verdict::there);
    EXPECT_EQ(write_anew(sample_jpeg("56"), now).verdict, Verdict::reported_before);
    EXPECT_EQ(desk_->ask<host::NotPlaced>(host::Place{other_time.ticket, 7, "", "", "p", {}})
                  .problem.code,
              host::Code::picture_not_there);
    EXPECT_EQ(read_file(desk_->place(other_size).path), sample_jpeg("56"));
}

TEST_F(Examining, ASweptFileWasReportedBefore) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg());
    EXPECT_EQ(desk_->sweep(run_, false).pictures.size(), 1U);
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::reported_before);
}

TEST_F(Examining, ANewFileOfAnOldNameIsAnotherPicture) {
    desk_->bring(run_, "DSC00001.JPG", sample_jpeg("one"));
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("two"));
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::there);
}

TEST_F(Examining, AFileThatNeverCameIsNotThere) {
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::not_there);
    EXPECT_EQ(desk_->examine(run_, std::string(300, 'x')).verdict, Verdict::not_there);
}

TEST_F(Examining, AFileOfAStagingFolderThatHasGoneIsNotThere) {
    fs::remove_all(folder_.path());
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::not_there);
}

TEST_F(Examining, LinksFoldersAndHiddenNamesAreNoFiles) {
    write_file(folder_.path() / "mine.JPG", sample_jpeg("mine"));
    fs::create_symlink(folder_.path() / "mine.JPG", run_.staging / "link.JPG");
    fs::create_directory(run_.staging / "folder.JPG");
    write_file(run_.staging / ".hidden.JPG", sample_jpeg());
    ASSERT_EQ(::mkfifo((run_.staging / "pipe.JPG").c_str(), 0600), 0);
    for (const char* name : {"link.JPG", "folder.JPG", ".hidden.JPG", "pipe.JPG", ".", "..", ""}) {
        EXPECT_EQ(desk_->examine(run_, name).verdict, Verdict::not_a_file) << name;
    }
}

TEST_F(Examining, AFileElsewhereIsOutside) {
    write_file(folder_.path() / "mine.JPG", sample_jpeg());
    const OpenedRun other = desk_->open_run();
    write_file(other.staging / "theirs.JPG", sample_jpeg());
    fs::create_directory(run_.staging / "below");
    write_file(run_.staging / "below/deep.JPG", sample_jpeg());
    const std::string ours = run_.staging / "DSC~1.JPG";
    write_file(ours, sample_jpeg());
    for (const std::string& path :
         {(folder_.path() / "mine.JPG").string(), (run_.staging / "../../mine.JPG").string(),
          (other.staging / "theirs.JPG").string(), (run_.staging / "below/deep.JPG").string(),
          std::string("/etc/passwd"), std::string("/nowhere/x.JPG"), std::string("x.JPG"),
          std::string(), std::string("/"), std::string("/x\0y", 4), ours + std::string("\0", 1),
          fs::relative(ours).string()}) {
        EXPECT_EQ(examine_path(path).verdict, Verdict::outside) << path;
    }
    EXPECT_EQ(
        desk_->ask<host::Examined>(host::Examine{desk_->next_ticket(), "run-unknown", "/x/y.JPG"})
            .verdict,
        Verdict::outside);
    EXPECT_EQ(examine_path(ours).verdict, Verdict::there);
}

TEST_F(Examining, TheStagingFolderIsKnownUnderAnyPath) {
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg());
    TemporaryFolder elsewhere;
    fs::create_symlink(run_.staging, elsewhere.path() / "link");
    EXPECT_EQ(examine_path((elsewhere.path() / "link/DSC00001.JPG").string()).verdict,
              Verdict::there);
    write_file(run_.staging / "DSC00002.JPG", sample_jpeg());
    EXPECT_EQ(examine_path((run_.staging / "../" / run_.name / ".//DSC00002.JPG").string()).verdict,
              Verdict::there);
}

TEST_F(Examining, AFolderThatLooksLikeTheStagingFolderIsOutside) {
    fs::rename(run_.staging, folder_.path() / ".incoming/aside");
    fs::create_directory(run_.staging);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg());
    EXPECT_EQ(desk_->examine(run_, "DSC00001.JPG").verdict, Verdict::outside);
}

TEST_F(Examining, AFileOfTheFolderOfBeforeIsFoundThere) {
    TemporaryFolder second;
    desk_->ask<host::FolderOpened>(host::OpenFolder{desk_->next_ticket(), second.path().string()});
    const auto moved = desk_->ask<host::RunOpened>(
        host::OpenRun{desk_->next_ticket(), second.path().string(), run_.name});
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("late"));
    const auto found = desk_->ask<host::Examined>(
        host::Examine{desk_->next_ticket(), moved.run, (run_.staging / "DSC00001.JPG").string()});
    EXPECT_EQ(found.verdict, Verdict::there);
    EXPECT_EQ(desk_->place(found).path, (folder_.path() / "DSC00001.JPG").string());
}

}  // namespace
