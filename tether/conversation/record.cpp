#include "tether/conversation/record.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/utsname.h>

#include "tether/conversation/record_line.h"

namespace tether {
namespace {

// What a record begins with. The number is the format's.
std::string heading() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char date[64];
    std::strftime(date, sizeof date, "%Y-%m-%d %H:%M:%S UTC, ", &parts);
    utsname system{};
    uname(&system);
    return std::string(date) + system.sysname + " " + system.release + " " + system.machine +
           ", tether " TETHER_VERSION ", record 1";
}

}  // namespace

bool Record::open(const std::filesystem::path& file) {
    // A pipe that nobody reads would be waited for.
    file_ = host::Descriptor(
        ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0666));
    if (!file_.is_open()) {
        trouble_ = errno == ENXIO ? "nobody reads from it" : std::strerror(errno);
        return false;
    }
    // Two that begin at once would both find it empty. Where nothing can be locked, they may.
    if (flock(file_.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        file_.close();
        trouble_ = "another program is writing to it";
        return false;
    }
    struct stat found {};
    if (fstat(file_.number(), &found) != 0 || S_ISBLK(found.st_mode) ||
        (S_ISREG(found.st_mode) && found.st_size > 0)) {
        file_.close();
        trouble_ = "it is not empty, and a record replaces nothing";
        return false;
    }
    note(heading(), start_);
    return trouble_.empty();
}

void Record::add(char direction, std::string_view text, host::TimePoint at, bool whole) {
    if (direction == '!') {
        return add_error(text, at);
    }
    write(direction, redacted_ ? redaction_.redact(direction, text) : std::string(text), at, whole);
}

void Record::add_error(std::string_view text, host::TimePoint at) {
    write('!', redacted_ ? "<text>" : text, at);
}

void Record::add_client(std::string_view text, host::TimePoint at) {
    write('#', "client: " + (redacted_ ? "<text>" : std::string(text)), at);
}

void Record::add_problem(const host::Problem& problem, host::TimePoint at) {
    std::string text = "problem " + std::string(host::word(problem.code));
    switch (problem.code) {
        case host::Code::worker_not_starting:
        case host::Code::worker_gone:
        case host::Code::worker_hangs:
        case host::Code::worker_floods:
            text += ": " + problem.text;
            break;
        default:
            text += redacted_ ? "" : ": " + problem.text;
            break;
    }
    write('#', text, at);
}

void Record::note(std::string_view text, host::TimePoint at) {
    write('#', text, at);
}

void Record::write(char mark, std::string_view text, host::TimePoint at, bool whole) {
    if (!file_.is_open()) {
        return;
    }
    const auto since_start = std::chrono::round<std::chrono::milliseconds>(at - start_);
    const std::string line = written({since_start, mark, std::string(text), whole}) + "\n";
    // A hole in the middle would be worse than an end.
    if (!host::write_all(file_, line, host::TimePoint::max())) {
        trouble_ = std::strerror(errno);
        file_.close();
    }
}

}  // namespace tether
