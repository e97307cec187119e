// What a worker costs that has nothing to do.

#include <memory>
#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/kernel.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

struct Idler {
    explicit Idler(const std::string& program) : subject(program) {
        subject.hear_until("READY|OK");
        // Answered: all threads are up.
        subject.say("PRELOAD\n");
        subject.hear();
    }

    void begin() {
        sleeps_before = *sleeps(subject.process());
        seconds_before = *processor_seconds(subject.process());
    }

    Subject subject;
    double sleeps_before = 0;
    double seconds_before = 0;
};

struct Cost {
    Samples wake_ups;   // a second
    Samples processor;  // microseconds a second
};

Cost cost(const std::vector<std::unique_ptr<Idler>>& idlers, double duration) {
    constexpr double microseconds_per_second = 1e6;
    Cost result;
    for (const auto& idler : idlers) {
        const pid_t process = idler->subject.process();
        result.wake_ups.push_back((*sleeps(process) - idler->sleeps_before) / duration);
        result.processor.push_back((*processor_seconds(process) - idler->seconds_before) *
                                   microseconds_per_second / duration);
    }
    return result;
}

}  // namespace

void measure_idle(Bench& bench) {
    const int pairs = 7;
    std::vector<std::unique_ptr<Idler>> workers;
    std::vector<std::unique_ptr<Idler>> echoes;
    for (int pair = 0; pair < pairs; ++pair) {
        workers.push_back(std::make_unique<Idler>(bench.worker()));
        echoes.push_back(std::make_unique<Idler>(bench.program("bench_echo")));
    }
    const pid_t first = workers.front()->subject.process();
    if (!sleeps(first) || !processor_seconds(first)) {
        bench.results.skipped("Idle wake-ups and processor time",
                              "this system's /proc does not tell them");
        return;
    }
    const std::chrono::seconds duration(bench.rounds(10, 2));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    for (int pair = 0; pair < pairs; ++pair) {
        workers[static_cast<std::size_t>(pair)]->begin();
        echoes[static_cast<std::size_t>(pair)]->begin();
    }
    std::this_thread::sleep_for(duration);
    const Cost worker = cost(workers, seconds(duration));
    const Cost echo = cost(echoes, seconds(duration));
    bench.results.at_most(4.05, "Idle wake-ups", median(worker.wake_ups), "a second",
                          "echo " + brief(median(echo.wake_ups)));
    bench.results.at_most(1.2, "Idle processor time", bench.ratio(worker.processor, echo.processor),
                          "of the echo",
                          brief(bench.typical(worker.processor)) + " µs a second; echo " +
                              brief(bench.typical(echo.processor)));
}
