// What `tether serve` puts between a host and its worker: how much later than the worker it is
// ready, and how much later than the request CAPTURE reaches the worker.

#include <filesystem>
#include <fstream>
#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/one_way.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view initialize =
    R"({"jsonrpc":"2.0","id":1,"method":"initialize","params":{"client":{"name":"bench","version":"1"}}})"
    "\n";

// Notifications before it are passed over.
void hear_answer(Subject& server, const std::string& id) {
    const std::string beginning = R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)";
    std::string_view line;
    do {
        line = server.hear();
        if (line.find("\"error\":") != std::string_view::npos) {
            give_up("the server answers " + std::string(line));
        }
    } while (line.substr(0, beginning.size()) != beginning);
}

void end(Subject& server) {
    server.say(R"({"jsonrpc":"2.0","id":9,"method":"shutdown"})"
               "\n");
    hear_answer(server, "9");
    server.await_end();
}

}  // namespace

void measure_serve_start(Bench& bench) {
    const Camera camera("camera \"MODEL-A\" over USB, card in");
    const std::string shots = camera.folder() / "shots";
    Samples servers;
    Samples workers;
    for (int round = 0; round < bench.rounds(101, 11); ++round) {
        {
            const auto started = Clock::now();
            Subject worker(bench.worker(), {}, camera.environment());
            worker.hear_until("READY|OK");
            workers.push_back(microseconds(Clock::now() - started));
        }
        const auto started = Clock::now();
        Subject server(bench.program("tether"), {"serve", "--folder", shots}, camera.environment());
        server.say(initialize);
        hear_answer(server, "1");
        servers.push_back(microseconds(Clock::now() - started));
        end(server);
    }
    bench.results.at_most(
        3, "tether serve, start to initialized", bench.ratio(servers, workers),
        "of the worker's start",
        brief(bench.typical(servers)) + " µs; worker " + brief(bench.typical(workers)));
}

void measure_serve_capture(Bench& bench) {
    const Camera camera("no camera");
    const fs::path stamps = camera.folder() / "stamps";
    Subject server(bench.program("tether"),
                   {"serve", "--folder", camera.folder() / "shots", "--save-dest", "card",
                    "--worker", bench.program("bench_stamping_worker")},
                   {{"BENCH_STAMPS", stamps}});
    server.say(initialize);
    server.say(R"({"jsonrpc":"2.0","id":2,"method":"connect"})"
               "\n");
    hear_answer(server, "2");
    Subject echo(bench.program("bench_echo"));
    echo.hear_until("READY|OK");

    Samples asked;
    Samples ways_in;
    for (int shot = 0; shot < bench.rounds(201, 21); ++shot) {
        // As in a studio: everybody sleeps between two shots.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ways_in.push_back(measure_one_way(echo).in);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        asked.push_back(now_in_microseconds());
        server.say(R"({"jsonrpc":"2.0","id":3,"method":"capture"})"
                   "\n");
        hear_answer(server, "3");
    }
    end(server);

    Samples to_capture;
    std::ifstream file(stamps);
    for (double nanosecond = 0; file >> nanosecond;) {
        to_capture.push_back(nanosecond / 1e3 - asked[to_capture.size()]);
    }
    if (to_capture.size() != asked.size()) {
        give_up("the worker was not asked for every shot");
    }
    bench.results.at_most(
        3, "tether serve, capture to CAPTURE", bench.ratio(to_capture, ways_in),
        "of the echo's one way",
        brief(bench.typical(to_capture)) + " µs; echo " + brief(bench.typical(ways_in)));
}
