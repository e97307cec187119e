// The yardstick for the worker: its threads, its queue and its way of reading and writing lines,
// with no camera and nothing to do. Whatever the worker takes beyond this is its own.
//
// PRELOAD gets the worker's answer, so that both read and write the same bytes; STAMP the
// nanosecond at which the main thread had it, so that the way in and the way out can be told apart;
// QUIT ends it; any other line gets its first field back, in upper case.

#include <cctype>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#if defined(__linux__)
#include <stdio_ext.h>
#endif

namespace {

constexpr std::chrono::milliseconds idle_period{250};

// Never destroyed: the reader still runs when the process ends.
std::mutex& g_lines_mutex = *new std::mutex;
std::condition_variable& g_lines_changed = *new std::condition_variable;
std::deque<std::string>& g_lines = *new std::deque<std::string>;
bool g_input_open = true;

std::mutex& g_output_mutex = *new std::mutex;

void write_line(const std::string& line) {
    const std::lock_guard lock(g_output_mutex);
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

void read_lines() {
    char buffer[4096];
    while (std::fgets(buffer, sizeof buffer, stdin) != nullptr) {
        std::string line(buffer);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
            line.pop_back();
        }
        {
            const std::lock_guard lock(g_lines_mutex);
            g_lines.push_back(std::move(line));
        }
        g_lines_changed.notify_one();
    }
    {
        const std::lock_guard lock(g_lines_mutex);
        g_input_open = false;
    }
    g_lines_changed.notify_one();
}

[[noreturn]] void idle() {
    for (;;) {
        std::this_thread::sleep_for(idle_period);
    }
}

// "QUIT" too when the input has ended.
std::string next_line() {
    std::unique_lock lock(g_lines_mutex);
    g_lines_changed.wait(lock, [] { return !g_lines.empty() || !g_input_open; });
    if (g_lines.empty()) {
        return "QUIT";
    }
    std::string line = std::move(g_lines.front());
    g_lines.pop_front();
    return line;
}

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t bar; (bar = line.find('|', start)) != std::string::npos; start = bar + 1) {
        fields.push_back(line.substr(start, bar - start));
    }
    fields.push_back(line.substr(start));
    return fields;
}

std::string upper_case(std::string name) {
    for (char& byte : name) {
        byte = static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    }
    return name;
}

}  // namespace

int main() {
#if defined(__linux__)
    // Newer C libraries take every stream's lock in exit, and the reader sleeps with stdin's.
    __fsetlocking(stdin, FSETLOCKING_BYCALLER);
#endif
    write_line("READY|OK");
    std::thread(read_lines).detach();
    std::thread(idle).detach();
    for (;;) {
        const std::vector<std::string> fields = split(next_line());
        const std::string name = upper_case(fields.front());
        if (name == "QUIT") {
            std::exit(0);
        }
        if (name == "STAMP") {
            const auto now = std::chrono::steady_clock::now().time_since_epoch();
            write_line(std::to_string(std::chrono::nanoseconds(now).count()));
        } else {
            write_line(name == "PRELOAD" ? "PRELOADED|OK" : name);
        }
    }
}
