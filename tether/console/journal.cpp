#include "tether/console/journal.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "host/camera/uptime.h"
#include "host/process/clock.h"
#include "tether/rpc/text.h"
#include "tether/rpc/unanswered.h"

namespace console {
namespace {

constexpr std::size_t fields_of_a_line = 5;
// Longer than any that the camera writes: a whole one that is longer is none.
constexpr std::size_t longest_line = std::size_t{1} << 16;

std::vector<std::string_view> split(std::string_view line) {
    std::vector<std::string_view> fields;
    while (true) {
        const std::size_t tab = line.find('\t');
        fields.push_back(line.substr(0, tab));
        if (tab == std::string_view::npos) {
            return fields;
        }
        line.remove_prefix(tab + 1);
    }
}

// "2040.033343": seconds and six digits, exactly.
std::optional<host::Time> time_of(std::string_view text) {
    constexpr std::size_t digits = 6;
    long long seconds = 0;
    long long microseconds = 0;
    const char* end = text.data() + text.size();
    const auto whole = std::from_chars(text.data(), end, seconds);
    if (whole.ec != std::errc() || end - whole.ptr != digits + 1 || *whole.ptr != '.') {
        return std::nullopt;
    }
    const auto rest = std::from_chars(whole.ptr + 1, end, microseconds);
    if (rest.ec != std::errc() || rest.ptr != end) {
        return std::nullopt;
    }
    return std::chrono::seconds(seconds) + std::chrono::microseconds(microseconds);
}

rpc::Json milliseconds(host::Time time) {
    constexpr double in_one = 1000;
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    return static_cast<double>(microseconds) / in_one;
}

std::string made_folder() {
    const char* wanted = std::getenv("TMPDIR");
    std::string folder =
        std::string(wanted != nullptr && *wanted == '/' ? wanted : "/tmp") + "/tether-XXXXXX";
    return mkdtemp(folder.data()) == nullptr ? std::string() : folder;
}

}  // namespace

std::string call_of(std::string_view line, host::Time begun, host::Time now, host::Time steady) {
    const auto fields = split(line);
    if (fields.size() != fields_of_a_line) {
        return {};
    }
    const auto start = time_of(fields[0]);
    const auto duration = time_of(fields[1]);
    if (!start || (!duration && fields[1] != "-")) {
        return {};
    }
    return rpc::notification_text("call",
                                  {{"atMs", milliseconds(now - (steady - *start) - begun)},
                                   {"durationMs", duration ? milliseconds(*duration) : rpc::Json()},
                                   {"thread", rpc::valid_text(fields[2])},
                                   {"call", rpc::valid_text(fields[3])},
                                   {"result", rpc::valid_text(fields[4])}});
}

// A named pipe: it takes no room however long the day is. It is opened for writing too, so that it
// does not end with a worker that is replaced.
Journal::Journal(host::Time begun, std::function<void(std::string)> told)
    : begun_(begun), told_(std::move(told)), folder_(made_folder()) {
    if (folder_.empty()) {
        return;
    }
    path_ = folder_ + "/journal";
    if (mkfifo(path_.c_str(), S_IRUSR | S_IWUSR) == 0) {
        pipe_ = host::Descriptor(::open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    }
    if (!pipe_.is_open()) {
        path_.clear();
        return;
    }
    thread_ = std::thread([this] { work(); });
}

Journal::~Journal() {
    if (thread_.joinable()) {
        ending_.wake();
        thread_.join();
    }
    if (!folder_.empty()) {
        unlink((folder_ + "/journal").c_str());
        rmdir(folder_.c_str());
    }
}

void Journal::work() {
    std::string rest;
    std::array<char, 65536> bytes;
    while (true) {
        std::array<pollfd, 2> watched{pollfd{pipe_.number(), POLLIN, 0},
                                      pollfd{ending_.descriptor(), POLLIN, 0}};
        ::poll(watched.data(), watched.size(), -1);
        const ssize_t count = ::read(pipe_.number(), bytes.data(), bytes.size());
        if (count <= 0 && watched[1].revents != 0) {
            return;
        }
        const host::Time now = host::uptime();
        const host::Time steady = host::Clock::now().time_since_epoch();
        rest.append(bytes.data(), static_cast<std::size_t>(count > 0 ? count : 0));
        for (std::size_t end = 0; (end = rest.find('\n')) != std::string::npos;
             rest.erase(0, end + 1)) {
            if (std::string call = call_of(rest.substr(0, end), begun_, now, steady);
                !call.empty()) {
                told_(std::move(call));
            }
        }
        if (rest.size() > longest_line) {
            rest.clear();
        }
    }
}

}  // namespace console
