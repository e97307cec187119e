#include "host/pictures/disk/lock.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "host/pictures/disk/regular_file.h"
#include "host/values/utf8.h"

namespace host::pictures {
namespace {

// A path escaped, and a number.
constexpr std::size_t longest_note = std::size_t{3} * 4096 + 32;

Lock take(int folder, const char* name, int flags) {
    Lock lock;
    lock.file = open_regular(folder, name, O_RDWR | flags, lock.error);
    if (lock.error != 0) {
        return lock;
    }
    while (::flock(lock.file.number(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) {
            lock.error = errno;
            lock.taken = errno == EWOULDBLOCK ? Taken::held_by_another : Taken::no;
            return lock;
        }
    }
    lock.taken = Taken::yes;
    return lock;
}

// A path may have a line feed in it.
std::string on_one_line(std::string_view path) {
    std::string text = escape_bytes(path);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at)) {
        text.replace(at, 1, "%0A");
    }
    return text;
}

}  // namespace

Lock take_lock(int folder, const char* name) {
    return take(folder, name, O_CREAT);
}

Lock take_existing_lock(int folder, const char* name) {
    return take(folder, name, 0);
}

int write_note(int lock, const LockNote& note) {
    std::string text = (note.process > 0 ? std::to_string(note.process) : "") + "\n";
    if (!note.stands_in.empty()) {
        text += on_one_line(note.stands_in) + "\n";
    }
    const ssize_t written = ::pwrite(lock, text.data(), text.size(), 0);
    if (written < 0 || static_cast<std::size_t>(written) < text.size()) {
        return written < 0 ? errno : ENOSPC;
    }
    return ::ftruncate(lock, static_cast<off_t>(text.size())) == 0 ? 0 : errno;
}

LockNote read_note(int lock) {
    std::string text(longest_note, '\0');
    const ssize_t got = ::pread(lock, text.data(), text.size(), 0);
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    LockNote note;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), note.process);
    if (error != std::errc() || note.process < 0) {
        note.process = 0;
    }
    const std::size_t first = text.find('\n');
    const std::size_t second = first == std::string::npos ? first : text.find('\n', first + 1);
    if (second != std::string::npos) {
        note.stands_in =
            unescape_bytes(std::string_view(text).substr(first + 1, second - first - 1));
    }
    return note;
}

}  // namespace host::pictures
