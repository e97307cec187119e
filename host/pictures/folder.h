// A folder that is open, and the runs in it. The picture thread only.
//
//   FOLDER/.incoming/           for its owner only
//     lock                      held by the program that uses the folder
//     ledger                    what was placed, and what was told
//     run-.../                  where one worker puts its files
//     run-....lock              held by that worker; its number
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <unordered_set>

#include "host/pictures/disk/identity.h"
#include "host/pictures/ledger/ledger.h"
#include "host/pictures/ledger/pages.h"
#include "host/process/pipe.h"
#include "host/values/file_work.h"

namespace host::pictures {

inline constexpr const char* incoming_name = ".incoming";
inline constexpr const char* lock_name = "lock";
inline constexpr const char* ledger_name = "ledger";

// The names that the halves of a pair share, for those that may still get their other half.
struct Pair {
    std::string name;
    std::string run;
    std::string camera_stem;  // its case folded
    std::string folder;       // below the one that pictures go to
    std::string stem;
    std::optional<std::uint64_t> shot;
    std::string tag;
    bool raw = false;
    bool developed = false;
};

class Pairs {
  public:
    Pair* named(std::string_view name);
    // The latest of a run that lacks this kind.
    Pair* lacking(Kind kind, std::string_view run, std::string_view camera_stem);
    void remember(const Placing& placed);

  private:
    // A half comes seconds after the other one.
    static constexpr std::size_t most = 512;
    std::deque<Pair> pairs_;
};

struct Folder {
    std::string path;  // absolute, links resolved
    Identity identity;
    Descriptor itself;
    Descriptor incoming;
    Descriptor lock;
    Ledger ledger;
    Pages pages;
    bool open = true;               // false: only its runs still use it
    bool renames_excluding = true;  // until the file system has said that it cannot
    std::uint64_t last_number = 0;  // of {n}
    std::uint64_t last_shot = 0;
    Pairs pairs;
    std::unordered_set<std::uint64_t> untold;    // ids
    std::map<std::string, Placing> unfinished;   // "RUN/NAME": written down and not moved yet
    std::unordered_set<std::string> left_there;  // "RUN/NAME" that a problem has named

    // The folder at its path is still this one.
    bool is_there() const;
    // What lies in .incoming is there too. Who deletes that takes the worker's folder away.
    bool has_incoming() const;
    std::optional<std::uint64_t> room() const;
};

struct Run {
    std::string name;
    std::shared_ptr<Folder> folder;
    Descriptor staging;
    Identity identity;                // of the staging folder
    Descriptor lock;                  // until the worker has begun
    std::shared_ptr<Run> moved_from;  // of before; the last one's lock is what the worker holds
    pid_t process = 0;
    bool over = false;
    bool empty = false;                        // its staging folder has been removed
    std::unordered_set<std::uint64_t> placed;  // names that files had here, as hashes

    std::string staging_path() const;
    bool has_staging() const;
    bool was_placed(std::string_view file) const;
    void remember_placed(std::string_view file);
};

// Of a name that a run's lock file has beside its staging folder.
std::string lock_of(std::string_view run);

// "The folder cannot be used: ..." in words that can be shown.
std::string in_words(int error);

// Where an open folder is now: its path may have changed since.
std::string path_now(int folder, const std::string& otherwise);

}  // namespace host::pictures
