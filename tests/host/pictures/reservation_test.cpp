// A disk without a rename that replaces nothing: an empty file keeps the name for a picture. It is
// ours only while nobody has put anything into it or in its stead.

#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/pictures/desk.h"
#include "tests/host/pictures/disk_calls.h"

namespace {

class Reservation : public OpenDesk {
  protected:
    Reservation() {
        disk_calls::no_exclusive_rename = true;
        write_file(run_.staging / "A.JPG", sample_jpeg("A"));
        examined_ = desk_->examine(run_, "A.JPG");
    }
    ~Reservation() override {
        disk_calls::no_exclusive_rename = false;
        disk_calls::before = disk_calls::before_looking = {};
    }
    host::Problem fail_to_place() {
        host::Place work = how_;
        work.ticket = examined_.ticket;
        host::Problem problem = desk_->ask<host::NotPlaced>(work).problem;
        disk_calls::before = {};
        return problem;
    }
    // As a kill leaves it between the reservation and the rename.
    void leave_reservation() {
        disk_calls::before = [](std::string_view call) {
            return call == "renameat" || call == "unlinkat" ? EIO : 0;
        };
        const mode_t before = ::umask(027);
        fail_to_place();
        ::umask(before);
    }
    std::string place_again() {
        return desk_->place(desk_->examine(run_, "A.JPG"), how_).path;
    }

    host::Examined examined_;
    host::Place how_{0, 7, "", "very/deep/below/{camera}", "p", {}};
    const fs::path place_ = folder_.path() / "very/deep/below/A.JPG";
    const fs::path next_place_ = folder_.path() / "very/deep/below/A-2.JPG";
};

TEST_F(Reservation, ThatIsLeftIsUsedByTheNextTry) {
    leave_reservation();
    struct stat facts {};
    ASSERT_EQ(::stat(place_.c_str(), &facts), 0);
    EXPECT_EQ(facts.st_size, 0);
    EXPECT_EQ(facts.st_mode & 0777, 0640U);
    EXPECT_EQ(place_again(), place_);
    EXPECT_EQ(files_in(folder_.path()),
              (std::map<std::string, std::string>{{"very/deep/below/A.JPG", sample_jpeg("A")}}));
}

TEST_F(Reservation, ThatIsLeftIsUsedByTheNextStart) {
    leave_reservation();
    EXPECT_EQ(restart().pictures.at(0).path, place_);
    EXPECT_FALSE(fs::exists(next_place_));
}

TEST_F(Reservation, ThatIsLeftForAFileThatIsNotThereAnyMoreIsRemoved) {
    leave_reservation();
    write_file(run_.staging / "B.JPG", sample_jpeg("another"));
    fs::rename(run_.staging / "B.JPG", run_.staging / "A.JPG");
    EXPECT_EQ(names_of(restart().pictures, folder_.path()), std::set<std::string>{"A.JPG"});
    EXPECT_FALSE(fs::exists(place_));
}

TEST_F(Reservation, ThatHasGoneWithItsFolderIsNotMissed) {
    leave_reservation();
    fs::remove_all(folder_.path() / "very");
    fs::remove(run_.staging / "A.JPG");
    EXPECT_EQ(restart().problems.size(), 1U) << "the picture is nowhere";
    EXPECT_FALSE(fs::exists(folder_.path() / "very"));
}

TEST_F(Reservation, IsNotTakenForOursWhenItIsAStrangers) {
    const auto size = [&] {
        write_file(place_, "mine");
    };
    const auto links = [&] {
        fs::create_hard_link(place_, folder_.path() / "mine");
    };
    const auto age = [&] {
        fs::last_write_time(place_, fs::last_write_time(place_) - std::chrono::hours(1));
    };
    const auto owner = [&] {
        ASSERT_EQ(::chown(place_.c_str(), 65534, 65534), 0);
    };
    const auto kind = [&] {
        fs::remove(place_);
        ASSERT_EQ(::mkfifo(place_.c_str(), 0600), 0);
    };
    std::vector<std::function<void()>> changes{size, links, age, kind};
    if (::geteuid() == 0) {
        changes.emplace_back(owner);
    }
    for (std::size_t change = 0; change < changes.size(); ++change) {
        SCOPED_TRACE(change);
        how_.pair = std::to_string(change);
        leave_reservation();
        changes[change]();
        EXPECT_EQ(place_again(), next_place_);
        EXPECT_TRUE(fs::exists(place_));
        fs::remove(place_);
        fs::remove(next_place_);
        write_file(run_.staging / "A.JPG", sample_jpeg("A"));
        examined_ = desk_->examine(run_, "A.JPG");
    }
}

// The clocks of some disks are two seconds behind.
TEST_F(Reservation, IsOursWhenItIsLittleOlderThanItsLine) {
    leave_reservation();
    fs::last_write_time(place_, fs::last_write_time(place_) - std::chrono::seconds(1));
    EXPECT_EQ(place_again(), place_);
}

TEST_F(Reservation, IsLeftToWhoeverHasItWhenTheMoveFails) {
    const auto write = [&] {
        write_file(place_, "mine");
    };
    const auto replace = [&] {
        write_file(folder_.path() / "mine", "");
        fs::rename(folder_.path() / "mine", place_);
    };
    const auto nothing = [] {
    };
    for (const auto& [change, stays] :
         {std::pair{std::function<void()>(write), true}, {replace, true}, {nothing, false}}) {
        int moves = 0;
        disk_calls::before = [&, change = change](std::string_view call) {
            if (call != "renameat") {
                return 0;
            }
            ++moves;
            change();
            return EEXIST;
        };
        EXPECT_EQ(fail_to_place().text,
                  "A picture could not be brought to its place: Input/output error. It is now " +
                      (run_.staging / "A.JPG").string());
        EXPECT_EQ(moves, 1);
        EXPECT_EQ(fs::exists(place_), stays);
        fs::remove(place_);
        examined_ = desk_->examine(run_, "A.JPG");
    }
}

TEST_F(Reservation, OfANameThatAStrangerTookMeanwhileIsNotMade) {
    bool noted = false;
    disk_calls::before = [&](std::string_view call) {
        // Behind the line in the ledger.
        if (call == "openat" && noted && !fs::exists(place_)) {
            write_file(place_, "");
        }
        noted = noted || call == "renameat2";
        return 0;
    };
    EXPECT_EQ(desk_->place(examined_, how_).path, next_place_);
    EXPECT_EQ(read_file(place_), "");
    EXPECT_EQ(read_file(next_place_), sample_jpeg("A"));
}

TEST_F(Reservation, ThatAStrangerHasBegunToWriteIntoIsNotUsed) {
    disk_calls::before_looking = [&](std::string_view call) {
        if (call == "fstat" && fs::exists(place_)) {
            write_file(place_, "mine");
        }
        return 0;
    };
    EXPECT_EQ(desk_->place(examined_, how_).path, next_place_);
    EXPECT_EQ(read_file(place_), "mine");
}

}  // namespace
