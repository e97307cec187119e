#include "tether/doctor/regular_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace doctor {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t most_searched = std::uint64_t{256} << 20;
constexpr std::size_t searched_at_once = std::size_t{64} << 10;

std::string why_not_opened(const fs::path& file, int error) {
    std::error_code failure;
    if (error == ELOOP) {
        return "is behind links that lead back to themselves";
    }
    if (error != ENOENT && error != ENOTDIR) {
        return std::string("cannot be read: ") + std::strerror(error);
    }
    if (fs::is_symlink(file, failure)) {
        return "is a link to " + fs::read_symlink(file, failure).string() + ", which is not there";
    }
    return "is not there";
}

std::string why_no_file(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFDIR:
            return "is a folder, not a file";
        case S_IFIFO:
            return "is a named pipe, not a file";
        case S_IFSOCK:
            return "is a socket, not a file";
        default:
            return "is a device, not a file";
    }
}

}  // namespace

std::optional<RegularFile> RegularFile::open(const fs::path& file, std::string& why) {
    // Some devices do something when they are merely opened, so they are not. What counts is the
    // look at the open file: another may have taken the place in between, and without O_NONBLOCK a
    // pipe would be waited for.
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) {
        why = why_not_opened(file, errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        why = why_no_file(status.st_mode);
        return std::nullopt;
    }
    host::Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!opened.is_open() || fstat(opened.number(), &status) != 0) {
        why = why_not_opened(file, errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        why = why_no_file(status.st_mode);
        return std::nullopt;
    }
    return RegularFile(std::move(opened), static_cast<std::uint64_t>(status.st_size));
}

// Not mapped: who shortens a file while it is mapped ends the process that looks with SIGBUS. A
// read just comes out short.
std::size_t RegularFile::read(std::uint64_t offset, char* bytes, std::size_t count) const {
    std::size_t done = 0;
    while (done < count && offset + done < size_) {
        const auto wanted = std::min<std::uint64_t>(count - done, size_ - offset - done);
        const ssize_t got = pread(file_.number(), bytes + done, static_cast<std::size_t>(wanted),
                                  static_cast<off_t>(offset + done));
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (got == 0 || errno != EINTR) {
            break;
        }
    }
    return done;
}

bool RegularFile::contains(std::string_view text) const {
    std::vector<char> piece(searched_at_once);
    // The pieces overlap, since the text may lie across the end of one.
    const std::size_t step = piece.size() - text.size();
    for (std::uint64_t at = 0; at < most_searched; at += step) {
        const std::size_t count = read(at, piece.data(), piece.size());
        if (std::string_view(piece.data(), count).find(text) != std::string_view::npos) {
            return true;
        }
        if (count < piece.size()) {
            break;
        }
    }
    return false;
}

std::string why_unreadable(const fs::path& file) {
    std::string why;
    RegularFile::open(file, why);
    return why;
}

}  // namespace doctor
