#include "bench/measure/server.h"

#include <cstdlib>
#include <fstream>

#if defined(__linux__)
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

namespace {

namespace fs = std::filesystem;

std::vector<std::string> with_serve(std::vector<std::string> options) {
    options.insert(options.begin(), "serve");
    return options;
}

Subject::Environment with_stamps(Subject::Environment environment, const fs::path& stamps) {
    environment.emplace_back("BENCH_STAMPS", stamps);
    return environment;
}

}  // namespace

Server::Server(const Bench& bench, const std::vector<std::string>& options,
               const Environment& environment)
    : Subject(bench.program("tether"), with_serve(options), environment) {}

void Server::ask(int id, std::string_view method) {
    say(R"({"jsonrpc":"2.0","id":)" + std::to_string(id) + R"(,"method":")" + std::string(method) +
        "\"}\n");
}

std::string_view Server::hear_answer(int id) {
    const std::string beginning = R"({"jsonrpc":"2.0","id":)" + std::to_string(id) + ",";
    std::string_view line;
    do {
        line = hear();
    } while (!line.starts_with(beginning));
    if (line.find(R"("error":)") != std::string_view::npos) {
        give_up("tether serve answers " + std::string(line));
    }
    return line;
}

std::string_view Server::hear_of(std::string_view method) {
    const std::string beginning = R"({"jsonrpc":"2.0","method":")" + std::string(method) + "\"";
    std::string_view line;
    do {
        line = hear();
    } while (!line.starts_with(beginning));
    return line;
}

void Server::initialize() {
    say(R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":)"
        R"({"client":{"name":"bench","version":"1"}}})"
        "\n");
    hear_answer(1);
}

void Server::connect() {
    ask(2, "connect");
    hear_answer(2);
}

void Server::shut_down() {
    ask(9, "shutdown");
    hear_answer(9);
    await_end();
}

ServedStandIn::ServedStandIn(const Bench& bench, const fs::path& folder,
                             Subject::Environment environment)
    : server(bench,
             {"--folder", folder / "shots", "--save-dest", "card", "--worker",
              bench.program("bench_stand_in")},
             with_stamps(std::move(environment), folder / "stamps")),
      stamps_(folder / "stamps") {
    server.initialize();
    server.connect();
}

void ServedStandIn::capture() {
    server.ask(3, "capture");
    server.hear_answer(3);
}

Samples ServedStandIn::stamps() const {
    constexpr double nanoseconds_per_microsecond = 1e3;
    Samples stamps;
    std::ifstream file(stamps_);
    for (double nanosecond = 0; file >> nanosecond;) {
        stamps.push_back(nanosecond / nanoseconds_per_microsecond);
    }
    return stamps;
}

MemoryFolder::MemoryFolder() {
#if defined(__linux__)
    struct statfs facts {};
    std::string path = "/dev/shm/bench-XXXXXX";
    if (statfs("/dev/shm", &facts) == 0 && facts.f_type == TMPFS_MAGIC &&
        mkdtemp(path.data()) != nullptr) {
        path_ = path;
    }
#endif
}

MemoryFolder::~MemoryFolder() {
    std::error_code ignored;
    if (!path_.empty()) {
        fs::remove_all(path_, ignored);
    }
}
