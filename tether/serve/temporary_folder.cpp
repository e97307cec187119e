#include "tether/serve/temporary_folder.h"

#include <cstdlib>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace serve {
namespace {

constexpr const char* name_of_socket = "/camera";

std::string made_in(const std::string& parent) {
    std::string path = parent + "/tether-XXXXXX";
    // The address of a socket is shorter than other paths.
    if (path.size() + std::string(name_of_socket).size() >= sizeof sockaddr_un{}.sun_path) {
        return {};
    }
    return mkdtemp(path.data()) == nullptr ? std::string() : path;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    if (const char* wanted = std::getenv("TMPDIR"); wanted != nullptr && *wanted == '/') {
        folder_ = made_in(wanted);
    }
    if (folder_.empty()) {
        folder_ = made_in("/tmp");
    }
    if (!folder_.empty()) {
        socket_ = folder_ + name_of_socket;
    }
}

TemporaryFolder::~TemporaryFolder() {
    if (folder_.empty()) {
        return;
    }
    // A camera that was killed leaves it.
    struct stat found {};
    if (lstat(socket_.c_str(), &found) == 0 && S_ISSOCK(found.st_mode)) {
        unlink(socket_.c_str());
    }
    rmdir(folder_.c_str());
}

}  // namespace serve
