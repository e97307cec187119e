#include "host/pictures/ledger/ledger.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/pictures/disk/regular_file.h"
#include "host/pictures/disk/sync.h"

namespace host::pictures {

int Ledger::open(int folder, const char* name) {
    int error = 0;
    file_ = open_regular(folder, name, O_RDWR | O_APPEND | O_CREAT, error);
    if (error != 0) {
        return error;
    }
    struct stat facts {};
    if (::fstat(file_.number(), &facts) != 0) {
        return errno;
    }
    char last = '\n';
    if (facts.st_size > 0 && ::pread(file_.number(), &last, 1, facts.st_size - 1) != 1) {
        return errno == 0 ? EIO : errno;
    }
    torn_ = last != '\n';
    return 0;
}

int Ledger::append(const LedgerEntry& entry) {
    const std::string text = (torn_ ? "\n" : "") + write_entry(entry);
    std::string_view left = text;
    while (!left.empty()) {
        const ssize_t written = ::write(file_.number(), left.data(), left.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            torn_ = torn_ || left.size() < text.size();
            return written == 0 ? EIO : errno;
        }
        left.remove_prefix(static_cast<std::size_t>(written));
    }
    torn_ = false;
    return sync_file(file_.number());
}

int Ledger::read(const std::function<bool(const LedgerEntry&)>& each) const {
    return read_from(0, [&](const LedgerEntry& entry, std::uint64_t) { return each(entry); });
}

int Ledger::read_from(std::uint64_t begin, const EachLine& each) const {
    LedgerLines lines(each, begin);
    for (int error = 0;;) {
        const std::string piece = bytes(begin, LedgerLines::longest, error);
        if (piece.empty() || !lines.add(piece)) {
            return error;
        }
        begin += piece.size();
    }
}

std::optional<std::uint64_t> Ledger::end_of(const LedgerEntry& entry) const {
    struct stat facts {};
    if (::fstat(file_.number(), &facts) != 0) {
        return std::nullopt;
    }
    int error = 0;
    const std::string line = "\n" + write_entry(entry);
    std::string behind;  // the beginning of what was looked through before
    for (auto begin = static_cast<std::uint64_t>(facts.st_size); begin > 0;) {
        const std::size_t size = std::min<std::uint64_t>(begin, LedgerLines::longest);
        begin -= size;
        const std::string piece = (begin == 0 ? "\n" : "") + bytes(begin, size, error) + behind;
        if (const std::size_t at = piece.rfind(line); at != std::string::npos) {
            return begin + at + line.size() - (begin == 0 ? 1 : 0);
        }
        behind = piece.substr(0, line.size() - 1);
    }
    return std::nullopt;
}

bool Ledger::has_before(std::uint64_t end, const LedgerEntry& entry) const {
    int error = 0;
    const std::string line = write_entry(entry);
    return end >= line.size() && bytes(end - line.size(), line.size(), error) == line;
}

// Fewer at the end; none where the disk cannot be read, with an errno in `error`.
std::string Ledger::bytes(std::uint64_t begin, std::size_t most, int& error) const {
    std::string piece(most, '\0');
    ssize_t got = 0;
    do {
        got = ::pread(file_.number(), piece.data(), piece.size(), static_cast<off_t>(begin));
    } while (got < 0 && errno == EINTR);
    error = got < 0 ? errno : 0;
    piece.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return piece;
}

bool LedgerLines::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        too_long_ = too_long_ || line_.size() + part.size() > longest;
        if (!too_long_) {
            line_ += part;
        }
        taken_ += part.size();
        if (end == std::string_view::npos) {
            return true;
        }
        ++taken_;
        bytes.remove_prefix(end + 1);
        if (!end_line()) {
            return false;
        }
    }
    return true;
}

bool LedgerLines::end_line() {
    bool more = true;
    if (!too_long_ && !line_.empty()) {
        if (const auto entry = read_entry(line_)) {
            more = each_(*entry, taken_);
        }
    }
    line_.clear();
    too_long_ = false;
    return more;
}

}  // namespace host::pictures
