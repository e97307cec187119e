// Workers that outlive their program: children of the test that hold the lock of a run.

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "tests/host/pictures/desk.h"

namespace {

using host::Code;

// Holds a descriptor until it is told to end, or is ended.
class Worker {
  public:
    Worker(int held, bool ignores_sigterm) {
        int told[2] = {};
        int ready[2] = {};
        EXPECT_EQ(::pipe(told), 0);
        EXPECT_EQ(::pipe(ready), 0);
        process_ = ::fork();
        if (process_ == 0) {
            ::signal(SIGTERM, ignores_sigterm ? SIG_IGN : SIG_DFL);
            ::signal(SIGHUP, SIG_DFL);
            for (int file = 3; file < 1024; ++file) {
                if (file != held && file != told[0] && file != ready[1]) {
                    ::close(file);
                }
            }
            char byte = 0;
            ::_exit(::write(ready[1], &byte, 1) == 1 && ::read(told[0], &byte, 1) >= 0 ? 0 : 1);
        }
        char byte = 0;
        EXPECT_EQ(::read(ready[0], &byte, 1), 1);
        for (const int end : {told[0], ready[0], ready[1]}) {
            ::close(end);
        }
        told_ = told[1];
    }
    ~Worker() {
        end();
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
        }
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    pid_t process() const {
        return process_;
    }
    void end() {
        if (told_ >= 0) {
            ::close(std::exchange(told_, -1));
        }
    }
    // The signal that ended it; 0: it ended by itself.
    int ended_by() {
        int status = 0;
        EXPECT_EQ(::waitpid(std::exchange(process_, -1), &status, 0) > 0, true);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }
    bool lives() const {
        return ::waitpid(process_, nullptr, WNOHANG) == 0;
    }

  private:
    pid_t process_ = -1;
    int told_ = -1;
};

class LeftRuns : public OpenDesk {
  protected:
    // The worker has begun, and its program goes without a word.
    void crash(const Worker& worker) {
        desk_->store().work(host::RunBegun{run_.name, worker.process()});
        desk_ = nullptr;
    }
    // The worker has gone on under another folder, where it leaves a file, and its program goes.
    void crash_in(const fs::path& folder, const Worker& worker) {
        desk_->ask<host::FolderOpened>(host::OpenFolder{desk_->next_ticket(), folder.string()});
        desk_->store().work(host::RunBegun{run_.name, worker.process()});
        const auto moved = desk_->ask<host::RunOpened>(
            host::OpenRun{desk_->next_ticket(), folder.string(), run_.name});
        write_file(fs::path(moved.staging) / "DSC00001.JPG", sample_jpeg("late"));
        desk_ = nullptr;
    }
    std::vector<host::Problem> outlived_by(const std::string& process) const {
        return {{Code::worker_hangs,
                 "A worker of before, process " + process +
                     ", does not end. What it has brought stays in " + run_.staging.string(),
                 {},
                 {}}};
    }
};

TEST_F(LeftRuns, WorkersAreWaitedForByDefault) {
    using std::chrono::seconds;
    const host::pictures::Options options;
    EXPECT_EQ(options.folder_in_use, seconds(20));
    EXPECT_EQ(options.before_sigterm, seconds(4));
    EXPECT_EQ(options.before_sigkill, seconds(1));
    EXPECT_EQ(options.after_sigkill, seconds(2));
}

TEST_F(LeftRuns, AWorkerThatIsStillEndingIsWaitedFor) {
    Worker worker(run_.lock, false);
    crash(worker);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("late"));
    host::pictures::Options options = impatient();
    options.before_sigterm = std::chrono::minutes(10);
    Desk next(folder_.path(), options);
    std::thread ends([&] { worker.end(); });
    EXPECT_EQ(names_of(next.open().pictures, folder_.path()),
              std::set<std::string>{"DSC00001.JPG"});
    ends.join();
    EXPECT_EQ(worker.ended_by(), 0);
    EXPECT_FALSE(fs::exists(run_.staging));
    EXPECT_FALSE(fs::exists(lock()));
}

TEST_F(LeftRuns, AWorkerThatStaysIsEndedAndItsFilesAreBroughtIn) {
    Worker worker(run_.lock, false);
    crash(worker);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("late"));
    Desk next(folder_.path());
    EXPECT_EQ(names_of(next.open().pictures, folder_.path()),
              std::set<std::string>{"DSC00001.JPG"});
    EXPECT_EQ(worker.ended_by(), SIGTERM);
}

TEST_F(LeftRuns, AWorkerThatIgnoresSigtermIsKilled) {
    Worker worker(run_.lock, true);
    crash(worker);
    host::pictures::Options options = impatient();
    options.before_sigkill = {};
    Desk next(folder_.path(), options);
    EXPECT_TRUE(next.open().problems.empty());
    EXPECT_EQ(worker.ended_by(), SIGKILL);
}

TEST_F(LeftRuns, AWorkerWhoseNumberWasNeverWrittenIsEndedAllTheSame) {
    Worker worker(run_.lock, false);
    desk_ = nullptr;
    EXPECT_EQ(read_file(lock()), "");
    Desk next(folder_.path());
    EXPECT_TRUE(next.open().problems.empty());
    EXPECT_EQ(worker.ended_by(), SIGTERM);
}

TEST_F(LeftRuns, AProcessThatGotTheWorkersNumberIsLeftAlone) {
    Worker bystander(-1, false);
    Worker worker(run_.lock, false);
    crash(bystander);
    Desk next(folder_.path());
    next.open();
    EXPECT_EQ(worker.ended_by(), SIGTERM);
    EXPECT_TRUE(bystander.lives());
}

TEST_F(LeftRuns, AProcessThatOnlyReadsTheLockFileIsLeftAlone) {
    const int read_only = ::open(lock().c_str(), O_RDONLY | O_CLOEXEC);
    Worker reader(read_only, false);
    Worker worker(run_.lock, false);
    ::close(read_only);
    crash(worker);
    Desk next(folder_.path());
    next.open();
    EXPECT_EQ(worker.ended_by(), SIGTERM);
    EXPECT_TRUE(reader.lives());
}

TEST_F(LeftRuns, AWorkerThatSurvivesIsNamedAndItsFilesAreLeftAlone) {
    // This very process holds the lock, and does not end itself.
    const int held = ::dup(run_.lock);
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("late"));
    desk_ = nullptr;
    host::pictures::Options options = impatient();
    options.before_sigkill = options.after_sigkill = {};
    for (const auto& [note, process] :
         {std::pair{"", "unknown"}, std::pair{"1\n", "1"}, std::pair{"4711\n", "4711"}}) {
        write_file(lock(), note);
        Desk next(folder_.path(), options);
        const auto opened = next.open();
        EXPECT_TRUE(opened.pictures.empty());
        EXPECT_EQ(opened.problems, outlived_by(process));
        EXPECT_EQ(read_file(run_.staging / "DSC00001.JPG"), sample_jpeg("late"));
    }
    ::close(held);
    write_file(lock(), "1\n/nowhere/run.lock\n");
    EXPECT_EQ(restart().problems, outlived_by("1"));
    write_file(lock(), "");
    EXPECT_EQ(restart().pictures.size(), 1U);
}

TEST_F(LeftRuns, AWorkerIsNamedByTheNumberThatHoldsTheLock) {
    Worker one(run_.lock, false);
    Worker other(run_.lock, false);
    Worker bystander(-1, false);
    desk_ = nullptr;
    const auto start = [&](const Worker& noted) {
        write_file(lock(), std::to_string(noted.process()) + "\n");
        Desk next(folder_.path());
        next.store().hurry();  // nobody is waited for, and nobody is ended
        return next.open().problems;
    };
    for (const Worker* worker : {&one, &other}) {
        EXPECT_EQ(start(*worker), outlived_by(std::to_string(worker->process())));
    }
    other.end();
    EXPECT_EQ(other.ended_by(), 0);
    EXPECT_EQ(start(bystander), outlived_by(std::to_string(one.process())));
    one.end();
    EXPECT_EQ(one.ended_by(), 0);
    EXPECT_TRUE(start(bystander).empty());
}

TEST_F(LeftRuns, AWorkerThatWasMovedIsEndedByTheLockOfItsFirstRun) {
    TemporaryFolder second;
    Worker worker(run_.lock, false);
    crash_in(second.path(), worker);
    Desk next(second.path());
    EXPECT_EQ(next.open().pictures.size(), 1U);
    EXPECT_EQ(worker.ended_by(), SIGTERM);
}

TEST_F(LeftRuns, AWorkerThatWasMovedIsKnownByTheLockOfItsFirstRun) {
    TemporaryFolder second;
    Worker worker(run_.lock, false);
    crash_in(second.path(), worker);
    host::pictures::Options options = impatient();
    options.before_sigterm = std::chrono::minutes(10);
    Desk patient(second.path(), options);
    std::thread ends([&] { worker.end(); });
    EXPECT_EQ(patient.open().pictures.size(), 1U);
    ends.join();
    EXPECT_EQ(worker.ended_by(), 0);
}

TEST_F(LeftRuns, AWorkerWhoseFirstFolderHasGoneIsLeftAloneWhileItLives) {
    TemporaryFolder second;
    Worker worker(run_.lock, false);
    crash_in(second.path(), worker);
    fs::remove_all(folder_.path());

    Desk next(second.path());
    const auto opened = next.open();
    EXPECT_TRUE(opened.pictures.empty());
    EXPECT_NE(text_of(opened.problems, Code::worker_hangs)
                  .find("process " + std::to_string(worker.process())),
              std::string::npos);
    EXPECT_TRUE(worker.lives());
    worker.end();
    EXPECT_EQ(worker.ended_by(), 0);
    next.store().work(host::CloseFolder{second.path().string()});
    EXPECT_EQ(next.open().pictures.size(), 1U);
}

TEST_F(LeftRuns, ALockThatIsMissingOrLeadsNowhereIsNobodys) {
    for (const char* note : {"", "\n/nowhere/run.lock\n"}) {
        run_ = desk_->open_run();
        write_file(run_.staging / "DSC00001.JPG", sample_jpeg(note));
        desk_ = nullptr;
        fs::remove(lock());
        if (*note != '\0') {
            write_file(lock(), note);
        }
        EXPECT_EQ(restart().pictures.size(), 1U + (*note != '\0')) << "one is not told yet";
        EXPECT_FALSE(fs::exists(run_.staging));
    }
    desk_ = nullptr;
    write_file(folder_.path() / ".incoming/run-gone.lock", "4711\n");
    EXPECT_TRUE(restart().problems.empty());
    EXPECT_FALSE(fs::exists(folder_.path() / ".incoming/run-gone.lock"));
}

TEST_F(LeftRuns, ALockThatIsALinkIsNotFollowed) {
    TemporaryFolder elsewhere;
    write_file(elsewhere.path() / "mine", "mine");
    desk_ = nullptr;
    fs::remove(lock());
    fs::create_symlink(elsewhere.path() / "mine", lock());
    write_file(run_.staging / "DSC00001.JPG", sample_jpeg("late"));
    Desk next(folder_.path());
    EXPECT_EQ(next.open().pictures.size(), 1U);
    EXPECT_EQ(read_file(elsewhere.path() / "mine"), "mine");
    EXPECT_TRUE(fs::is_symlink(lock()));
}

}  // namespace
