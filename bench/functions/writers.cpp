// bench_writers emit|write LINES: after a line on stdin, eight threads write so many lines each,
// through the worker's emit or through the least that keeps lines whole: a mutex around one write.

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <vector>

#include "protocol/emit.h"

namespace {

constexpr int thread_count = 8;

std::mutex g_write_mutex;

void write_once(const std::string& line) {
    const std::string bytes = line + "\n";
    const std::lock_guard lock(g_write_mutex);
    if (write(STDOUT_FILENO, bytes.data(), bytes.size()) < 0) {
        std::_Exit(1);
    }
}

// Of the length of a report, and each different, so that the reader can see a torn one.
void write_lines(int thread, long count, void (*write_line)(const std::string&)) {
    const std::string prefix =
        "DOWNLOADED|/Users/me/Pictures/Shots of the day/" + std::to_string(thread) + "|";
    for (long number = 0; number < count; ++number) {
        write_line(prefix + std::to_string(number));
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view way = argc == 3 ? argv[1] : "";
    if (way != "emit" && way != "write") {
        std::fputs("usage: bench_writers emit|write LINES\n", stderr);
        return 2;
    }
    const auto write_line = way == "emit" ? emit : write_once;
    const long count = std::atol(argv[2]);
    if (std::getchar() == EOF) {
        return 1;
    }
    std::vector<std::thread> threads;
    threads.reserve(thread_count);
    for (int thread = 0; thread < thread_count; ++thread) {
        threads.emplace_back(write_lines, thread, count, write_line);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
