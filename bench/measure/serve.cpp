// What `tether serve` puts between a host and its worker: how much later than the worker it is
// ready, how soon a session is, and how much later than the request CAPTURE reaches the worker.

#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/one_way.h"
#include "bench/measure/server.h"
#include "bench/measure/statistics.h"

namespace {

constexpr double microseconds_per_millisecond = 1e3;

// Both lines come through the same pipe: what is between them is what lay between them there.
double connected_to_ready(Server& server) {
    server.ask(2, "connect");
    while (server.hear_of("line").find("CONNECTED|") == std::string_view::npos) {}
    const auto connected = Clock::now();
    while (server.hear_of("state").find(R"("state":"ready")") == std::string_view::npos) {}
    const double took = microseconds(Clock::now() - connected) / microseconds_per_millisecond;
    server.hear_answer(2);
    server.ask(3, "disconnect");
    server.hear_answer(3);
    return took;
}

}  // namespace

void measure_serve_start(Bench& bench) {
    const Camera camera("camera \"MODEL-A\" over USB, card in");
    // How long a disk takes to make the folders is the disk's.
    const MemoryFolder memory;
    const std::string shots = (memory.path().empty() ? camera.folder() : memory.path()) / "shots";
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
        Server server(bench, {"--folder", shots}, camera.environment());
        server.initialize();
        servers.push_back(microseconds(Clock::now() - started));
        server.shut_down();
    }
    bench.results.at_most(
        3, "tether serve, start to initialized", bench.ratio(servers, workers),
        "of the worker's start",
        brief(bench.typical(servers)) + " µs; worker " + brief(bench.typical(workers)));
}

void measure_serve_ready(Bench& bench) {
    const Camera camera("camera \"MODEL-A\" over USB, card in");
    Server server(bench, {"--folder", camera.folder() / "shots"}, camera.environment());
    server.initialize();
    server.say(R"({"jsonrpc":"2.0","id":4,"method":"subscribe","params":{"lines":true}})"
               "\n");
    server.hear_answer(4);
    Samples times;
    for (int round = 0; round < bench.rounds(51, 11); ++round) {
        times.push_back(connected_to_ready(server));
    }
    server.shut_down();
    bench.results.at_most(100, "tether serve, CONNECTED to ready", bench.typical(times), "ms");
}

void measure_serve_capture(Bench& bench) {
    const Camera camera("no camera");
    ServedStandIn served(bench, camera.folder());
    Subject echo(bench.program("bench_echo"));
    echo.hear_until("READY|OK");

    Samples asked;
    Samples ways_in;
    Samples ways_through;  // a pipe, a process and a pipe: as many as lie between client and worker
    for (int shot = 0; shot < bench.rounds(201, 21); ++shot) {
        // As in a studio: everybody sleeps between two shots.
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const OneWay way = measure_one_way(echo);
        ways_in.push_back(way.in);
        ways_through.push_back(way.in + way.out);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        asked.push_back(now_in_microseconds());
        served.capture();
    }
    served.server.shut_down();

    Samples to_capture = served.stamps();
    if (to_capture.size() != asked.size()) {
        give_up("the worker was not asked for every shot");
    }
    for (std::size_t shot = 0; shot < asked.size(); ++shot) {
        to_capture[shot] -= asked[shot];
    }
    bench.results.at_most(
        3, "tether serve, capture to CAPTURE", bench.ratio(to_capture, ways_through),
        "of the way through the echo",
        brief(bench.typical(to_capture)) + " µs; echo " + brief(bench.typical(ways_through)));
    bench.results.plain("tether serve, capture to CAPTURE", bench.ratio(to_capture, ways_in),
                        "of the echo's one way", "echo " + brief(bench.typical(ways_in)));
}
