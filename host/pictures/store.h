// The folder that pictures go to, as the disk has it: looks at what a worker reports, moves it to
// its place, brings in what was left behind, and knows from a ledger what was placed and told.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/pictures/disk/identity.h"
#include "host/values/file_work.h"
#include "host/values/picture.h"
#include "host/values/time.h"

namespace host::pictures {

struct Options {
    // How long another program that uses the folder is waited for.
    std::chrono::milliseconds folder_in_use{20000};
    // Called once when one has to be; may be none.
    std::function<void(Ticket, const Problem&)> folder_waited_for{};
    // A worker that outlived its host has read the end of its input by then, and is given the time
    // that its own shutdown takes; then SIGTERM, then SIGKILL.
    std::chrono::milliseconds before_sigterm{4000};
    std::chrono::milliseconds before_sigkill{1000};
    std::chrono::milliseconds after_sigkill{2000};
    // Now; nothing: the system's clock.
    std::function<TimeOfDay()> time_of_day{};
};

// Why no file can be named by this template, a sentence; empty when files can. {camera}, the
// camera's own stem, {date}, {time}, {shot} and {n}, these two with a width as in {n:4}; what
// stands before the last slash are folders below the one that pictures go to. An empty template is
// "{camera}".
std::string why_no_name(std::string_view name_template);

struct Folder;
struct Run;

// Every call may take as long as a disk takes. All come from one thread, except hurry().
class Store {
  public:
    explicit Store(Options options = {});
    // Gives all locks back; what is staged stays for the next start.
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // Nothing for work that has no answer.
    std::optional<FileAnswer> work(const FileWork& work);

    // An empty folder stands for any.
    bool is_open(const std::string& folder) const;

    // From the ledger of a folder that is open, oldest first, at most `limit`; those behind `after`
    // when the ledger has a picture of this id, all otherwise. An empty folder is the one that was
    // opened last.
    std::vector<Picture> list(const std::string& folder, const std::string& after,
                              std::size_t limit);

    // From now on nobody is waited for, neither another program nor a worker that outlived its
    // host: the program ends. From any thread.
    void hurry() {
        hurried_ = true;
    }

  private:
    // A file that was examined and not placed yet.
    struct Pending {
        std::shared_ptr<Run> run;
        std::string name;
        FileFacts file;
        bool whole = false;
    };

    // opening.cpp
    FileAnswer open_folder(const OpenFolder& work);
    FileAnswer take_folder(Ticket ticket, std::shared_ptr<Folder> folder);
    std::optional<Problem> lock_folder(Ticket ticket, Folder& folder) const;
    void close_folder(const std::string& path);
    FolderLooked look(const LookAtFolder& work) const;
    bool can_be_shot_into(const Folder& folder) const;
    std::shared_ptr<Folder> folder_at(const std::string& path) const;

    // runs.cpp
    FileAnswer open_run(const OpenRun& work);
    std::optional<Problem> make_run(Run& run) const;
    void begin_run(const RunBegun& work);
    RunSwept sweep_run(const SweepRun& work);
    void forget_run(const std::shared_ptr<Run>& run);
    void let_go_of(const std::shared_ptr<Run>& run);
    bool is_stood_in(const Run& run) const;

    // examining.cpp
    Examined examine(const Examine& work);
    std::shared_ptr<Run> run_of_staging(const std::string& run, const std::string& folder) const;
    FileAnswer place_examined(const Place& work);

    // store.cpp
    void tell(const std::string& id);
    TimeOfDay now() const;

    const Options options_;
    std::atomic<bool> hurried_{false};
    std::vector<std::shared_ptr<Folder>> folders_;  // the one opened last is the last
    std::map<std::string, std::shared_ptr<Run>> runs_;
    std::map<Ticket, Pending> pending_;
};

}  // namespace host::pictures
