// What a tap adds to a line and its answer: the same round trips with and without one between the
// host and the worker, in turn.

#include <filesystem>
#include <stdlib.h>

#include "bench/measure/bench.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr std::string_view question = "PRELOAD\n";
constexpr double most_microseconds = 100;

double median_trip(Subject& subject, int count) {
    Samples times;
    for (int trip = 0; trip < count; ++trip) {
        const auto start = Clock::now();
        subject.say(question);
        subject.hear();
        times.push_back(microseconds(Clock::now() - start));
    }
    return median(times);
}

}  // namespace

void measure_tap(Bench& bench) {
    char folder[] = "/tmp/bench-tap-XXXXXX";
    if (mkdtemp(folder) == nullptr) {
        give_up("no folder for the record");
    }
    {
        Subject worker(bench.worker());
        Subject tapped(bench.program("tether"),
                       {"tap", "--record", std::string(folder) + "/record", bench.worker()});
        worker.hear_until("READY|OK");
        tapped.hear_until("READY|OK");
        const int trips = bench.rounds(4000, 500);
        median_trip(worker, trips / 4);
        median_trip(tapped, trips / 4);
        Samples bare;
        Samples through;
        Samples added;
        for (int round = 0; round < bench.rounds(21, 7); ++round) {
            bare.push_back(median_trip(worker, trips));
            through.push_back(median_trip(tapped, trips));
            added.push_back(through.back() - bare.back());
        }
        bench.results.at_most(
            most_microseconds, "A line and its answer through a tap", bench.typical(added),
            "µs more",
            brief(bench.typical(through)) + " µs; without " + brief(bench.typical(bare)) + " µs");
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}
