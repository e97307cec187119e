#include "simulator/control/socket_file.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace camera_sim {
namespace {

constexpr const char* another_listens = "is where another virtual camera listens already";

// The folder of the socket, locked while somebody looks whether the name is free and takes it. A
// folder that cannot be locked goes without: then two that start at the same moment may both think
// so.
class FolderTaken {
  public:
    explicit FolderTaken(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        folder_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        constexpr auto patience = std::chrono::seconds(5);
        const auto end = std::chrono::steady_clock::now() + patience;
        while (folder_ >= 0 && flock(folder_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            if (std::chrono::steady_clock::now() >= end) {
                in_time_ = false;
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }
    ~FolderTaken() {
        if (folder_ >= 0) {
            close(folder_);
        }
    }
    FolderTaken(const FolderTaken&) = delete;
    FolderTaken& operator=(const FolderTaken&) = delete;

    bool in_time() const {
        return in_time_;
    }

  private:
    int folder_;
    bool in_time_ = true;
};

const sockaddr* plain(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

// Makes room for the socket; what forbids that, or nothing.
std::string clear_name(const sockaddr_un& address) {
    struct stat facts {};
    if (lstat(address.sun_path, &facts) != 0) {
        return "";  // whatever else is wrong, bind says
    }
    if (!S_ISSOCK(facts.st_mode)) {
        return "is no socket, and is left alone";
    }
    const int caller = socket(AF_UNIX, SOCK_STREAM, 0);
    if (caller < 0) {
        return std::string("cannot be tried: ") + std::strerror(errno);
    }
    fcntl(caller, F_SETFD, FD_CLOEXEC);
    fcntl(caller, F_SETFL, O_NONBLOCK);  // a listener may have more callers than it has room for
    const int error = connect(caller, plain(address), sizeof address) == 0 ? 0 : errno;
    close(caller);
    if (error == ENOENT) {
        return "";
    }
    if (error == 0 || error == EAGAIN || error == EINPROGRESS) {
        return another_listens;
    }
    if (error != ECONNREFUSED) {
        return std::string("is a socket of something else, and is left alone: ") +
               std::strerror(error);
    }
    return unlink(address.sun_path) == 0 || errno == ENOENT
               ? ""
               : std::string("cannot be replaced: ") + std::strerror(errno);
}

// Nobody else may direct the camera, not even for the moment before a chmod.
int bind_privately(int socket, const sockaddr_un& address) {
#if defined(__linux__)
    fchmod(socket, S_IRUSR | S_IWUSR);
    return bind(socket, plain(address), sizeof address);
#else
    const mode_t before = umask(S_IXUSR | S_IRWXG | S_IRWXO);
    const int bound = bind(socket, plain(address), sizeof address);
    const int error = errno;
    umask(before);
    errno = error;
    return bound;
#endif
}

}  // namespace

std::string SocketFile::bind_and_listen(int socket, const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return "is too long a path";
    }
    std::strcpy(address.sun_path, path.c_str());
    const FolderTaken folder(path);
    if (!folder.in_time()) {
        return "lies in a folder that another program has locked";
    }
    if (std::string why_not = clear_name(address); !why_not.empty()) {
        return why_not;
    }
    if (bind_privately(socket, address) != 0) {
        return errno == EADDRINUSE ? another_listens
                                   : std::string("cannot be made: ") + std::strerror(errno);
    }
    struct stat facts {};
    if (lstat(path.c_str(), &facts) != 0 || listen(socket, 16) != 0) {
        return std::string("cannot be made: ") + std::strerror(errno);
    }
    path_ = path;
    device_ = facts.st_dev;
    inode_ = facts.st_ino;
    return "";
}

void SocketFile::remove() const {
    struct stat facts {};
    if (!path_.empty() && lstat(path_.c_str(), &facts) == 0 && facts.st_dev == device_ &&
        facts.st_ino == inode_) {
        unlink(path_.c_str());
    }
}

}  // namespace camera_sim
