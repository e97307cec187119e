// An afternoon of pictures, as a host has them brought in, and what must be true of the folder when
// it was cut somewhere. What the host was told stands in a file, so that it outlives a kill.
#pragma once

#include <functional>
#include <string>

#include "tests/host/pictures/desk.h"

// Does it in a child that is killed before its call number `step` that changes the disk. False: it
// had done it before.
bool cut_at(int step, const std::function<void()>& what);

class Afternoon {
  public:
    // `where`: an empty folder for all of it.
    explicit Afternoon(const fs::path& where);

    const fs::path& folder() const {
        return folder_;
    }

    // Opens the folder, shoots pairs, a damaged picture and a movie, places and tells them, and
    // leaves one that nobody reports to the sweep. Goes on where the disk fails.
    void shoot() const;

    // Opens the folder and tells what comes of it.
    void start() const;

    // Starts once more; then every file is in one place, byte for byte, and was told under one id.
    // Nothing of a stranger has changed.
    void check() const;

    // Every file is in one place, in the folder or where it was staged; and `problems` name those
    // that are not in the folder.
    void check_nothing_lost(const std::vector<host::Problem>& problems) const;

    // What went wrong while it was shot.
    mutable std::vector<host::Problem> problems;

  private:
    void make(const fs::path& path, const std::string& content) const;
    void tell(Desk& desk, const host::Picture& picture) const;
    void place(Desk& desk, const OpenedRun& run, const std::string& name,
               const std::string& content, const host::Place& how) const;
    std::map<std::string, std::string> pictures_in_folder() const;

    fs::path folder_;
    fs::path made_;  // every file that a camera has sent is kept here too
    fs::path told_;  // lines of an id and a path
};
