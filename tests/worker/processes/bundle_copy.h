// A copy of the bundle that was built with this program, in a folder of its own.
#pragma once

#include <filesystem>
#include <string>

class BundleCopy {
  public:
    // `name` is the folder's that holds the copy; all of it goes with this object.
    explicit BundleCopy(const std::string& name);
    ~BundleCopy();
    BundleCopy(const BundleCopy&) = delete;
    BundleCopy& operator=(const BundleCopy&) = delete;

    // Of the folder with that name.
    std::filesystem::path folder() const;
    std::filesystem::path contents() const;
    std::filesystem::path worker() const;

  private:
    std::filesystem::path top_;
    std::filesystem::path contents_;
};
