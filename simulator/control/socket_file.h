#pragma once

// The control socket's name in the file system. Only a socket that nobody listens at any more is
// replaced, and only the own one removed.

#include <string>
#include <sys/types.h>

namespace camera_sim {

class SocketFile {
  public:
    // Binds `socket` to the path and makes it listen, open to this user only. What is wrong, as the
    // end of a sentence about the path, or nothing. Waits some seconds at most, for another camera
    // that is about to do the same in that folder.
    std::string bind_and_listen(int socket, const std::string& path);

    // When it is still there and still the one that was bound.
    void remove() const;

  private:
    std::string path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

}  // namespace camera_sim
