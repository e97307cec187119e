#include "host/pictures/ledger/ledger.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

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

void Ledger::read(const std::function<bool(const LedgerEntry&)>& each) const {
    std::vector<char> piece(LedgerLines::longest);
    LedgerLines lines(each);
    off_t at = 0;
    for (;;) {
        const ssize_t got = ::pread(file_.number(), piece.data(), piece.size(), at);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0 || !lines.add({piece.data(), static_cast<std::size_t>(got)})) {
            return;
        }
        at += got;
    }
}

bool LedgerLines::add(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        too_long_ = too_long_ || line_.size() + part.size() > longest;
        if (!too_long_) {
            line_ += part;
        }
        if (end == std::string_view::npos) {
            return true;
        }
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
            more = each_(*entry);
        }
    }
    line_.clear();
    too_long_ = false;
    return more;
}

}  // namespace host::pictures
