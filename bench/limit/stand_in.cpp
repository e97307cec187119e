// A worker whose camera takes no time: what a host does before the shutter is asked for, and with
// what comes afterwards, can be measured by it. When the fence behind a CAPTURE has been answered,
// it does one of these:
//
//   BENCH_PICTURE  the path of a file: a copy arrives in the download folder, under a new name with
//                  the same ending, and is reported
//   BENCH_LINES    a number: so many log lines, written as fast as they go, and the report of a
//                  file outside the download folder behind them. One write each, as a worker
//                  writes them; with BENCH_AT_ONCE as many in one as a pipe holds
//
// It writes nanoseconds of the steady clock into the file that BENCH_STAMPS names, one a line: when
// it had each CAPTURE, just before it reported a picture, before the first log line, behind the
// last one.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

std::FILE* g_stamps = nullptr;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

void write_line(const std::string& line) {
    std::cout << line << '\n' << std::flush;
}

long long now() {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::nanoseconds(since).count();
}

void stamp(long long nanosecond) {
    std::fprintf(g_stamps, "%lld\n", nanosecond);
    std::fflush(g_stamps);
}

class Deliveries {
  public:
    Deliveries() {
        const std::string path = environment("BENCH_PICTURE");
        std::ifstream file(path, std::ios::binary);
        picture_.assign(std::istreambuf_iterator<char>(file), {});
        ending_ = path.substr(path.find_last_of('.') + 1);
    }

    void deliver(const std::string& folder) {
        if (picture_.empty()) {
            return;
        }
        char name[40];
        std::snprintf(name, sizeof name, "DSC%05d.", ++number_);
        const std::string path = folder + "/" + name + ending_;
        std::ofstream file(path, std::ios::binary);
        file.write(picture_.data(), static_cast<std::streamsize>(picture_.size()));
        file.close();
        write_line("LOG|[SONY] landed " + (name + ending_));
        const long long reported = now();
        write_line("DOWNLOADED|" + path);
        stamp(reported);
    }

  private:
    std::string picture_;
    std::string ending_;
    int number_ = 0;
};

void flood(const std::string& count) {
    if (count.empty()) {
        return;
    }
    const std::size_t at_once = environment("BENCH_AT_ONCE").empty() ? 1 : 1 << 16;
    std::string lines;
    const long long begun = now();
    for (long line = std::stol(count); line > 0; --line) {
        lines += "LOG|[SONY] warning 0x00020002\n";
        if (lines.size() >= at_once || line == 1) {
            std::cout << lines << std::flush;
            lines.clear();
        }
    }
    write_line("DOWNLOADED|/elsewhere/a.JPG");
    const long long ended = now();
    stamp(begun);
    stamp(ended);
}

}  // namespace

int main() {
    std::ios::sync_with_stdio(false);
    g_stamps = std::fopen(environment("BENCH_STAMPS").c_str(), "w");
    if (g_stamps == nullptr) {
        return 1;
    }
    Deliveries deliveries;
    std::string folder;
    bool fired = false;
    write_line("CPP_WORKER|START bench");
    write_line("READY|OK");
    for (std::string line; std::getline(std::cin, line);) {
        const std::string command = line.substr(0, line.find('|'));
        if (command == "CAPTURE") {
            stamp(now());
            write_line("REMOTE_CAPTURED|OK");
            fired = true;
        } else if (command == "PRIME") {
            write_line("PRIME_DONE|OK");
            if (fired) {
                fired = false;
                deliveries.deliver(folder);
                flood(environment("BENCH_LINES"));
            }
        } else if (command == "SET_DOWNLOAD_DIR") {
            folder = line.substr(command.size() + 1);
            write_line("DOWNLOAD_DIR|" + folder);
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
