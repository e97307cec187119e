#include "tether/console/kept_record.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

#include "tether/conversation/record_line.h"
#include "tether/conversation/redaction.h"

namespace console {
namespace {

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

// The line with what is nobody's business taken out; a remark of a session names nobody.
std::string redacted(tether::Redaction& redaction, const std::string& text) {
    auto line = tether::read_record_line(text);
    if (!line || line->mark == '#') {
        return text;
    }
    line->text = line->mark == '!' ? "<text>" : redaction.redact(line->mark, line->text);
    return tether::written(*line);
}

// At the time of the last of these lines.
std::string end_behind(std::string_view lines) {
    lines = lines.substr(0, lines.find_last_not_of('\n') + 1);
    const auto last = tether::read_record_line(lines.substr(lines.rfind('\n') + 1));
    return tether::written({last ? last->at : std::chrono::milliseconds{}, '#',
                            "the record that can be downloaded ends here: it is full"}) +
           "\n";
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
    std::string last;  // lines that were written
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
            host::write_all(file_, end_behind(lines.empty() ? last : lines),
                            host::TimePoint::max());
        } else if (!lines.empty()) {
            last = lines;
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
