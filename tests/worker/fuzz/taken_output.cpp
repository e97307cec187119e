#include "tests/worker/fuzz/taken_output.h"

#include <cstdio>
#include <mutex>
#include <string_view>
#include <sys/types.h>
#include <utility>

#include "tests/worker/fuzz/require.h"

namespace {

// The virtual camera's threads write too.
std::mutex g_mutex;
std::vector<std::string> g_lines;

constexpr std::string_view free_texts[] = {"LOG|[SONY] ", "STATUS|", "ERROR|", "SAVE_DEST|"};
constexpr std::string_view escaped_texts[] = {"CONNECTED|", "DOWNLOAD_DIR|", "DOWNLOADED|"};
constexpr std::string_view whole_lines[] = {
    "DISCONNECTED|",      "REMOTE_CAPTURED|OK",   "PRELOADED|OK",   "PRIME_DONE|OK",
    "PUMP_IDLE_READY|OK", "PUMP_ACTIVE_READY|OK", "FILE_TYPE|jpeg", "FILE_TYPE|raw",
    "FILE_TYPE|both",     "FILE_TYPE|other",
};

bool is_of_the_protocol(std::string_view line) {
    for (const std::string_view whole : whole_lines) {
        if (line == whole) {
            return true;
        }
    }
    for (const std::string_view key : free_texts) {
        if (line.substr(0, key.size()) == key) {
            return true;
        }
    }
    for (const std::string_view key : escaped_texts) {
        if (line.substr(0, key.size()) == key) {
            return line.find_first_of("|\r\n", key.size()) == std::string_view::npos;
        }
    }
    return false;
}

ssize_t take(void*, const char* bytes, std::size_t size) {
    const std::scoped_lock lock(g_mutex);
    g_lines.emplace_back(bytes, size);
    return static_cast<ssize_t>(size);
}

}  // namespace

void take_output() {
    // More than any line, so that a line is one write.
    static char buffer[1 << 20];
    stdout = fopencookie(nullptr, "w", {nullptr, take, nullptr, nullptr});
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}

std::vector<std::string> taken_lines() {
    std::vector<std::string> lines;
    {
        const std::scoped_lock lock(g_mutex);
        lines = std::exchange(g_lines, {});
    }
    for (std::string& line : lines) {
        require(!line.empty() && line.back() == '\n', "a line is flushed whole: " + line);
        line.pop_back();
        require(is_of_the_protocol(line), "a line is one of the protocol: " + line);
    }
    return lines;
}
