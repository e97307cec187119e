// A host that writes a great many lines at once and reads the answers as they come.

#include "bench/measure/bench.h"
#include "bench/measure/kernel.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr double megabyte = 1e6;

struct Burst {
    double seconds;
    double peak;                                      // bytes, 0 where it cannot be told
    std::vector<std::pair<double, double>> answered;  // milliseconds, lines
};

// In a process of its own, which starts with an empty memory.
Burst burst(const std::string& program, const std::string& bytes, long lines) {
    Subject subject(program);
    subject.hear_until("READY|OK");
    Burst result{};
    const auto start = Clock::now();
    subject.pour(bytes, lines, [&](long count) {
        result.answered.emplace_back(seconds(Clock::now() - start) * 1e3,
                                     static_cast<double>(count));
    });
    result.seconds = seconds(Clock::now() - start);
    result.peak = peak_bytes(subject.process()).value_or(0);
    return result;
}

// As many points as a picture can show.
Curve thinned(const std::string& name, const std::string& picture, const Burst& burst) {
    constexpr std::size_t most_points = 200;
    const std::size_t step = burst.answered.size() / most_points + 1;
    Curve curve{picture, name, {{0, 0}}};
    for (std::size_t point = 0; point < burst.answered.size(); point += step) {
        curve.points.push_back(burst.answered[point]);
    }
    curve.points.push_back(burst.answered.back());
    return curve;
}

}  // namespace

void measure_burst(Bench& bench, int cores) {
    const long lines = bench.rounds(100'000, 20'000);
    std::string bytes;
    for (long line = 0; line < lines; ++line) {
        bytes += "PRELOAD\n";
    }
    Samples worker_times;
    Samples echo_times;
    Samples worker_peaks;
    Samples echo_peaks;
    const auto count = static_cast<double>(lines);
    const int rounds = bench.rounds(31, 7);
    for (int round = 0; round < rounds; ++round) {
        const Burst worker = burst(bench.worker(), bytes, lines);
        const Burst echo = burst(bench.program("bench_echo"), bytes, lines);
        worker_times.push_back(worker.seconds);
        echo_times.push_back(echo.seconds);
        worker_peaks.push_back(worker.peak);
        echo_peaks.push_back(echo.peak);
        const std::string picture = "burst" + on_cores(cores);
        bench.results.curve(thinned("worker", picture, worker));
        bench.results.curve(thinned("echo", picture, echo));
    }
    bench.results.at_least(0.95, "Burst of " + grouped(lines) + " lines" + on_cores(cores),
                           bench.ratio(echo_times, worker_times), "of the echo's pace",
                           brief(count / bench.typical(worker_times)) + " lines a second; echo " +
                               brief(count / bench.typical(echo_times)));
    if (worker_peaks.front() > 0) {
        bench.results.at_most(1.2, "Peak memory of the burst" + on_cores(cores),
                              bench.ratio(worker_peaks, echo_peaks), "of the echo",
                              brief(bench.typical(worker_peaks) / megabyte) + " MB; echo " +
                                  brief(bench.typical(echo_peaks) / megabyte));
    }
}
