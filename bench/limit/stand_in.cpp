// A worker whose camera takes no time: what a host does before the shutter is asked for can be
// measured by it. It writes the nanosecond at which it had each CAPTURE into the file that
// BENCH_STAMPS names.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

void write_line(const std::string& line) {
    std::cout << line << std::endl;
}

void stamp(std::FILE* stamps) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    std::fprintf(stamps, "%lld\n", static_cast<long long>(std::chrono::nanoseconds(now).count()));
    std::fflush(stamps);
}

}  // namespace

int main() {
    const char* file = std::getenv("BENCH_STAMPS");
    std::FILE* const stamps = file == nullptr ? nullptr : std::fopen(file, "w");
    if (stamps == nullptr) {
        return 1;
    }
    write_line("CPP_WORKER|START bench");
    write_line("READY|OK");
    for (std::string line; std::getline(std::cin, line);) {
        const std::string command = line.substr(0, line.find('|'));
        if (command == "CAPTURE") {
            stamp(stamps);
            write_line("REMOTE_CAPTURED|OK");
        } else if (command == "PRIME") {
            write_line("PRIME_DONE|OK");
        } else if (command == "SET_DOWNLOAD_DIR") {
            write_line("DOWNLOAD_DIR|" + line.substr(command.size() + 1));
        } else if (command == "CONNECT") {
            write_line("CONNECTED|MODEL-A");
            write_line("SAVE_DEST|card");
            write_line("FILE_TYPE|jpeg");
        } else if (command == "SET_SAVE_DEST") {
            write_line("SAVE_DEST|card");
        } else if (command == "QUIT") {
            return 0;
        }
    }
    return 0;
}
