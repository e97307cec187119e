// A folder of a test's own, which goes with it.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

class TemporaryFolder {
  public:
    // Not where the system keeps temporary files for this user: a socket's path must be short.
    explicit TemporaryFolder(const std::filesystem::path& where = "/tmp") {
        std::string name = where / "camera-test-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            std::perror(name.c_str());
            std::abort();
        }
        path_ = std::filesystem::canonical(name);
    }
    ~TemporaryFolder() {
        // What a test that failed has left running may be at work in it still.
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const {
        return path_;
    }

  private:
    std::filesystem::path path_;
};
