// A folder of this process's own, which nobody else can enter, for the time that it runs.
#pragma once

#include <string>

namespace serve {

class TemporaryFolder {
  public:
    TemporaryFolder();
    // Removes the folder with the socket in it, and nothing else.
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    // Empty when no folder could be made.
    const std::string& socket() const {
        return socket_;
    }

  private:
    std::string folder_;
    std::string socket_;
};

}  // namespace serve
