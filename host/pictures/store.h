// The folder that pictures go to, as the disk has it: looks at what a worker reports, moves it to
// its place, brings in what was left behind, and knows from a ledger what was placed and told.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/values/file_work.h"
#include "host/values/picture.h"
#include "host/values/time.h"

namespace host::pictures {

struct Options {
    // How long another program that uses the folder is waited for.
    std::chrono::milliseconds folder_in_use{20000};
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
    std::atomic<bool> hurried_{false};
};

}  // namespace host::pictures
