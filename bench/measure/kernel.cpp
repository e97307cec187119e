#include "bench/measure/kernel.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace {

namespace fs = std::filesystem;

constexpr double bytes_per_kilobyte = 1024;
constexpr double seconds_per_nanosecond = 1e-9;

fs::path place(pid_t process) {
    return "/proc/" + std::to_string(process);
}

// The number behind "key:" in a file of such lines.
std::optional<double> number(const fs::path& file, const std::string& key) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(key + ":", 0) == 0) {
            return std::stod(line.substr(key.size() + 1));
        }
    }
    return std::nullopt;
}

std::optional<double> bytes(const fs::path& file, const std::string& key) {
    const std::optional<double> found = number(file, key);
    return found ? std::optional(*found * bytes_per_kilobyte) : std::nullopt;
}

// The sum of what each thread of the process has, nothing when one has it not.
template <typename OfThread>
std::optional<double> over_threads(pid_t process, OfThread of_thread) {
    std::error_code unreadable;
    std::optional<double> sum;
    for (const fs::directory_entry& thread :
         fs::directory_iterator(place(process) / "task", unreadable)) {
        const std::optional<double> part = of_thread(thread.path());
        if (!part) {
            return std::nullopt;
        }
        sum = sum.value_or(0) + *part;
    }
    return sum;
}

}  // namespace

std::optional<double> resident_bytes(pid_t process) {
    return bytes(place(process) / "smaps_rollup", "Rss");
}

std::optional<double> proportional_bytes(pid_t process) {
    return bytes(place(process) / "smaps_rollup", "Pss");
}

std::optional<double> peak_bytes(pid_t process) {
    return bytes(place(process) / "status", "VmHWM");
}

std::optional<double> sleeps(pid_t process) {
    return over_threads(process, [](const fs::path& thread) {
        return number(thread / "status", "voluntary_ctxt_switches");
    });
}

std::optional<double> processor_seconds(pid_t process) {
    return over_threads(process, [](const fs::path& thread) {
        double nanoseconds = 0;
        return std::ifstream(thread / "schedstat") >> nanoseconds
                   ? std::optional(nanoseconds * seconds_per_nanosecond)
                   : std::nullopt;
    });
}
