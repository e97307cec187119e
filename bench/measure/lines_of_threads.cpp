// Eight threads that write lines at once: what keeping them whole costs, and that they are whole.

#include <array>
#include <charconv>

#include "bench/measure/bench.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr std::string_view prefix = "DOWNLOADED|/Users/me/Pictures/Shots of the day/";
constexpr int threads = 8;

// Takes a line apart as the writers put it together; false unless it is exactly its thread's next.
bool is_next(std::string_view line, std::array<long, threads>& next_of_thread) {
    if (line.substr(0, prefix.size()) != prefix || line.size() < prefix.size() + 3 ||
        line[prefix.size() + 1] != '|') {
        return false;
    }
    const int thread = line[prefix.size()] - '0';
    if (thread < 0 || thread >= threads) {
        return false;
    }
    const std::string_view digits = line.substr(prefix.size() + 2);
    long number = -1;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() &&
           number == next_of_thread[static_cast<std::size_t>(thread)]++;
}

struct Outpour {
    double seconds;
    long torn;
};

Outpour outpour(const std::string& program, const std::string& way, long lines) {
    Subject writers(program, {way, std::to_string(lines)});
    std::array<long, threads> next_of_thread{};
    Outpour result{};
    const auto start = Clock::now();
    writers.say("\n");
    for (long line = 0; line < lines * threads; ++line) {
        result.torn += is_next(writers.hear(), next_of_thread) ? 0 : 1;
    }
    result.seconds = seconds(Clock::now() - start);
    return result;
}

}  // namespace

void measure_lines_of_threads(Bench& bench) {
    const long lines = bench.rounds(20'000, 3'000);
    const int rounds = bench.rounds(11, 7);
    Samples emitted;
    Samples written;
    long torn = 0;
    const auto count = static_cast<double>(lines * threads);
    for (int round = 0; round < rounds; ++round) {
        const Outpour worker = outpour(bench.program("bench_writers"), "emit", lines);
        emitted.push_back(worker.seconds);
        torn += worker.torn;
        written.push_back(outpour(bench.program("bench_writers"), "write", lines).seconds);
    }
    bench.results.at_least(0.9, "Lines from eight threads at once", bench.ratio(written, emitted),
                           "of a mutex around one write",
                           brief(count / bench.typical(emitted)) + " lines a second; bare " +
                               brief(count / bench.typical(written)));
    bench.results.at_most(0, "Torn lines", static_cast<double>(torn),
                          "of " + grouped(lines * threads * rounds));
}
