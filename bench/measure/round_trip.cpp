// One line there and one line back, the next one only then: the time between two threads that wait
// for each other.

#include "bench/measure/bench.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr std::string_view question = "PRELOAD\n";
constexpr double p99 = 0.99;

void make_trips(Subject& subject, int count, Samples& times) {
    for (int trip = 0; trip < count; ++trip) {
        const auto start = Clock::now();
        subject.say(question);
        subject.hear();
        times.push_back(microseconds(Clock::now() - start));
    }
}

// All round trips of a subject, and what each round came to.
struct Trips {
    explicit Trips(const std::string& program) : subject(program) {}

    void make_round(int count) {
        Samples times;
        make_trips(subject, count, times);
        medians.push_back(median(times));
        tails.push_back(quantile(times, p99));
        all.insert(all.end(), times.begin(), times.end());
    }

    Subject subject;
    Samples medians;
    Samples tails;
    Samples all;
};

// The distribution, as so many of a thousand of its trips at or below a time.
Curve distribution(const std::string& name, const std::string& picture, const Samples& times) {
    Curve curve{picture, name, {}};
    for (int part = 0; part <= 1000; ++part) {
        curve.points.emplace_back(quantile(times, part / 1000.0), part / 1000.0);
    }
    return curve;
}

std::string beside(const Bench& bench, const Samples& worker, const Samples& echo,
                   const Samples& pipes) {
    return brief(bench.typical(worker)) + " µs; echo " + brief(bench.typical(echo)) +
           ", bare pipes " + brief(bench.typical(pipes));
}

}  // namespace

void measure_round_trip(Bench& bench, int cores) {
    const int rounds = bench.rounds(21, 7);
    const int trips = bench.rounds(4000, 500);
    Trips worker(bench.worker());
    worker.subject.hear_until("READY|OK");
    Trips echo(bench.program("bench_echo"));
    echo.subject.hear_until("READY|OK");
    Trips pipes(bench.program("bench_ping_pong"));

    Samples warm_up;
    for (Trips* each : {&worker, &echo, &pipes}) {
        make_trips(each->subject, trips / 4, warm_up);
    }
    for (int round = 0; round < rounds; ++round) {
        for (Trips* each : {&worker, &echo, &pipes}) {
            each->make_round(trips);
        }
    }
    const bool alone = cores == 1;
    bench.results.at_most(alone ? 1.05 : 1.10, "Round trip" + on_cores(cores) + ", median",
                          bench.ratio(worker.medians, echo.medians), "of the echo",
                          beside(bench, worker.medians, echo.medians, pipes.medians));
    const std::string name = "Round trip" + on_cores(cores) + ", p99";
    const double ratio = bench.ratio(worker.tails, echo.tails);
    const std::string measured = beside(bench, worker.tails, echo.tails, pipes.tails);
    if (alone) {
        bench.results.at_most(1.25, name, ratio, "of the echo", measured);
    } else {
        bench.results.plain(name, ratio, "of the echo", measured);
    }
    const std::string picture = "latency" + on_cores(cores);
    bench.results.curve(distribution("worker", picture, worker.all));
    bench.results.curve(distribution("echo", picture, echo.all));
    bench.results.curve(distribution("bare pipes", picture, pipes.all));
}
