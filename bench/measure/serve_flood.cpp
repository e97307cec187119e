// Log lines that come faster than anybody could want them: the pace at which `tether serve` takes
// them from its worker, beside `cat`.

#include <fstream>
#include <string>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/one_way.h"
#include "bench/measure/server.h"
#include "bench/measure/statistics.h"

namespace {

// Lines a microsecond.
double pace(long lines, double from, double to) {
    return static_cast<double>(lines) / (to - from);
}

std::string beside(const Samples& served, const Samples& cat) {
    return brief(median(served)) + " lines a microsecond; cat " + brief(median(cat));
}

// A flood that the worker is replaced for: it is read to its end all the same. cat writes as much
// into a pipe.
void measure_flood(Bench& bench, const Camera& camera) {
    constexpr long lines = 1'000'000;
    const std::string file = camera.folder() / "lines";
    {
        std::ofstream all(file);
        for (long line = 0; line < lines; ++line) {
            all << "LOG|[SONY] warning 0x00020002\n";
        }
    }
    Samples served;
    Samples cat;
    for (int round = 0; round < bench.rounds(11, 3); ++round) {
        ServedStandIn stand_in(bench, camera.folder(),
                               {{"BENCH_LINES", std::to_string(lines)}, {"BENCH_AT_ONCE", "1"}});
        stand_in.capture();
        stand_in.server.shut_down();
        const Samples stamps = stand_in.stamps();  // CAPTURE, the first line, the last one
        if (stamps.size() < 3) {
            give_up("the worker could not write its flood");
        }
        served.push_back(pace(lines, stamps[1], stamps[2]));

        const double begun = now_in_microseconds();
        Subject other("/bin/cat", {file});
        other.pour("", lines, [](long) {});
        cat.push_back(pace(lines, begun, now_in_microseconds()));
    }
    bench.results.at_least(0.5, "tether serve, a million log lines", median_ratio(served, cat),
                           "of cat's pace", beside(served, cat));
}

// Fewer than a flood has, each written by itself, until what the last one says has been told; cat
// passes on the same.
void measure_lines(Bench& bench, const Camera& camera) {
    constexpr long lines = 40'000;
    constexpr long others = 5;  // two at the start, two answers, one behind them
    const Subject::Environment count{{"BENCH_LINES", std::to_string(lines)}};
    Samples served;
    Samples cat;
    for (int round = 0; round < bench.rounds(31, 5); ++round) {
        ServedStandIn stand_in(bench, camera.folder(), count);
        stand_in.capture();
        stand_in.server.hear_of("problem");
        const double told = now_in_microseconds();
        stand_in.server.shut_down();
        served.push_back(pace(lines, stand_in.stamps().at(1), told));

        Subject::Environment environment = count;
        environment.emplace_back("BENCH_STAMPS", camera.folder() / "stamps");
        Subject other("/bin/sh", {"-c", "\"$0\" | cat", bench.program("bench_stand_in")},
                      environment);
        other.pour("CAPTURE\nPRIME\n", lines + others, [](long) {});
        cat.push_back(pace(lines, stand_in.stamps().at(1), now_in_microseconds()));
    }
    bench.results.at_least(0.5, "tether serve, 40,000 log lines one by one",
                           median_ratio(served, cat), "of cat's pace", beside(served, cat));
}

}  // namespace

void measure_serve_flood(Bench& bench) {
    const Camera camera("no camera");
    measure_flood(bench, camera);
    measure_lines(bench, camera);
}
