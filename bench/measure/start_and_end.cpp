// How long a host waits for a worker to be ready, and for it to be gone.

#include "bench/measure/bench.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

struct Life {
    Samples starts;
    Samples ends;

    void live(const std::string& program) {
        const auto started = Clock::now();
        Subject subject(program);
        subject.hear_until("READY|OK");
        starts.push_back(microseconds(Clock::now() - started));

        // Answered: all threads are up, and asleep.
        subject.say("PRELOAD\n");
        subject.hear();
        const auto told = Clock::now();
        subject.say("QUIT\n");
        subject.await_end();
        ends.push_back(microseconds(Clock::now() - told));
    }
};

std::string beside(const Bench& bench, const Samples& worker, const Samples& echo) {
    return brief(bench.typical(worker)) + " µs; echo " + brief(bench.typical(echo));
}

}  // namespace

void measure_start_and_end(Bench& bench, int cores) {
    const int rounds = bench.rounds(151, 21);
    Life worker;
    Life echo;
    for (int round = 0; round < rounds; ++round) {
        worker.live(bench.worker());
        echo.live(bench.program("bench_echo"));
    }
    bench.results.at_most(1.3, "Start to READY" + on_cores(cores),
                          bench.ratio(worker.starts, echo.starts), "of the echo",
                          beside(bench, worker.starts, echo.starts));
    bench.results.at_most(1.3, "QUIT to gone" + on_cores(cores),
                          bench.ratio(worker.ends, echo.ends), "of the echo",
                          beside(bench, worker.ends, echo.ends));
}
