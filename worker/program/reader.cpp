// The reader thread: the only user of stdin. It does not parse; fields and names are the main
// loop's.

#include "program/reader.h"

#include <cstdio>
#include <string>
#include <utility>

#include "threads/command_queue.h"

void reader_thread() {
    // fgets takes one byte less: a longer line arrives as several commands.
    char buffer[4096];
    while (std::fgets(buffer, sizeof buffer, stdin) != nullptr) {
        std::string line(buffer);
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
            line.pop_back();
        }
        if (!line.empty() && !post_command(std::move(line))) {
            // The process is leaving. Touching stdin again could meet exit unbuffering it.
            return;
        }
    }
    end_input();
}
