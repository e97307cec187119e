#include "tether/console/kept_record.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

#include "tether/conversation/redaction.h"

namespace console {
namespace {

constexpr std::string_view end_of_the_kept =
    "# the record that can be downloaded ends here: it is full\n";

// A file without a name.
host::Descriptor made_file() {
    const char* wanted = std::getenv("TMPDIR");
    std::string path =
        std::string(wanted != nullptr && *wanted == '/' ? wanted : "/tmp") + "/tether-XXXXXX";
    host::Descriptor file(mkstemp(path.data()));
    if (file.is_open()) {
        unlink(path.c_str());
        fcntl(file.number(), F_SETFD, FD_CLOEXEC);
    }
    return file;
}

// "   1.234 > CONNECT": what stands behind the mark is taken out, but for remarks.
std::string redacted(tether::Redaction& redaction, const std::string& line) {
    const std::size_t mark = line.find_first_of("<>!#");
    if (mark == std::string::npos || mark + 2 > line.size() || line[mark] == '#') {
        return line;
    }
    return line.substr(0, mark + 2) + redaction.redact(line[mark], line.substr(mark + 2));
}

struct Reading {
    host::Descriptor file;
    off_t at = 0;
    std::string rest;  // of a line
    bool redacts = false;
    tether::Redaction redaction;
};

// Some lines, or nothing when no more have been written.
std::optional<std::string> next(Reading& reading) {
    std::array<char, 65536> bytes;
    std::string lines;
    while (lines.empty()) {
        const ssize_t count =
            ::pread(reading.file.number(), bytes.data(), bytes.size(), reading.at);
        if (count <= 0) {
            return std::nullopt;
        }
        reading.at += count;
        reading.rest.append(bytes.data(), static_cast<std::size_t>(count));
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = reading.rest.find('\n', begin)) != std::string::npos;
             begin = end + 1) {
            const std::string line = reading.rest.substr(begin, end - begin);
            lines += (reading.redacts ? redacted(reading.redaction, line) : line) + "\n";
        }
        reading.rest.erase(0, begin);
    }
    return lines;
}

}  // namespace

KeptRecord::KeptRecord(std::string wanted, std::size_t most_bytes)
    : path_(std::move(wanted)), most_bytes_(most_bytes) {
    if (!path_.empty()) {
        return;
    }
    file_ = made_file();
    auto pipe = host::make_pipe();
    if (!file_.is_open() || !pipe) {
        return;
    }
    pipe_ = std::move(*pipe);
    path_ = "/dev/fd/" + std::to_string(pipe_.write_end.number());
    thread_ = std::thread([this] { keep(); });
}

KeptRecord::~KeptRecord() {
    pipe_.write_end.close();
    if (thread_.joinable()) {
        thread_.join();
    }
}

// The session must never wait for room in the pipe: what the file does not take is lost.
void KeptRecord::keep() {
    std::array<char, 65536> bytes;
    std::string rest;  // of a line
    std::size_t kept = 0;
    bool full = false;
    while (true) {
        const ssize_t count = ::read(pipe_.read_end.number(), bytes.data(), bytes.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return;
        }
        if (full || count < 0) {
            continue;
        }
        rest.append(bytes.data(), static_cast<std::size_t>(count));
        full = kept + rest.size() > most_bytes_;
        // Whole lines only, as many as there is room for.
        const std::size_t room = full ? most_bytes_ - kept : rest.size();
        const std::string lines =
            rest.substr(0, std::string_view(rest).substr(0, room).rfind('\n') + 1);
        rest.erase(0, lines.size());
        kept += lines.size();
        full = !host::write_all(file_, lines, host::TimePoint::max()) || full;
        if (full) {
            rest.clear();
            host::write_all(file_, end_of_the_kept, host::TimePoint::max());
        }
    }
}

std::function<std::optional<std::string>(std::size_t)> KeptRecord::pieces(bool redact) const {
    auto reading = std::make_shared<Reading>();
    reading->redacts = redact;
    reading->file = host::Descriptor(
        file_.is_open() ? fcntl(file_.number(), F_DUPFD_CLOEXEC, 0)
                        : ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return [reading](std::size_t) {
        return next(*reading);
    };
}

}  // namespace console
