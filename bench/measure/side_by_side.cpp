// Several workers on one machine, each with a camera of its own, all asked at once.

#include <memory>

#include "bench/measure/bench.h"
#include "bench/measure/kernel.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

using Subjects = std::vector<std::unique_ptr<Subject>>;

Subjects start(const std::string& program, int count) {
    Subjects subjects;
    for (int number = 0; number < count; ++number) {
        subjects.push_back(std::make_unique<Subject>(program));
    }
    for (const auto& subject : subjects) {
        subject->hear_until("READY|OK");
    }
    return subjects;
}

// From the first question to the last answer, in microseconds for each of them.
double share_of_a_round(const Subjects& subjects) {
    constexpr int rounds = 2000;
    Samples times;
    for (int round = 0; round < rounds; ++round) {
        const auto start = Clock::now();
        for (const auto& subject : subjects) {
            subject->say("PRELOAD\n");
        }
        for (const auto& subject : subjects) {
            subject->hear();
        }
        times.push_back(microseconds(Clock::now() - start));
    }
    return median(times) / static_cast<double>(subjects.size());
}

double bytes_each(const Subjects& subjects) {
    double sum = 0;
    for (const auto& subject : subjects) {
        sum += proportional_bytes(subject->process()).value_or(0);
    }
    return sum / static_cast<double>(subjects.size());
}

}  // namespace

void measure_side_by_side(Bench& bench) {
    constexpr double megabyte = 1e6;
    Curve workers{"side by side", "worker", {}};
    Curve echoes{"side by side", "echo", {}};
    for (const int count : {1, 2, 4, 6, 8, 10}) {
        const Subjects worker = start(bench.worker(), count);
        workers.points.emplace_back(count, share_of_a_round(worker));
        const Subjects echo = start(bench.program("bench_echo"), count);
        echoes.points.emplace_back(count, share_of_a_round(echo));
        if (count == 1 || count == 10) {
            const std::string who = count == 1 ? "One worker" : "Ten workers side by side";
            bench.results.plain(who + ", an answer each", workers.points.back().second, "µs",
                                "echo " + brief(echoes.points.back().second));
            bench.results.plain(who + ", memory each", bytes_each(worker) / megabyte, "MB",
                                "shared pages divided; echo " + brief(bytes_each(echo) / megabyte));
        }
    }
    bench.results.curve(std::move(workers));
    bench.results.curve(std::move(echoes));
}
