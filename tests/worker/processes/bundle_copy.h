// A copy of the bundle that was built with this program, in a folder of its own.
#pragma once

#include <filesystem>
#include <string>

#include "tests/temporary_folder.h"

class BundleCopy {
  public:
    // `name` is the folder's that holds the copy; all of it goes with this object.
    explicit BundleCopy(const std::string& name);

    // Of the folder with that name.
    std::filesystem::path folder() const;
    std::filesystem::path contents() const;
    std::filesystem::path worker() const;

  private:
    TemporaryFolder top_;
    std::filesystem::path contents_;
};
