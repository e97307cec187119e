// What the program takes on disk.

#include <filesystem>

#include "bench/measure/bench.h"

void measure_size(Bench& bench) {
    constexpr double kilobyte = 1e3;
    const auto bytes = [&bench](const std::string& name) {
        return static_cast<double>(std::filesystem::file_size(bench.program(name + ".stripped")));
    };
    const double worker = bytes("sony-worker");
    const double echo = bytes("bench_echo");
    bench.results.at_most(6, "Stripped size", worker / echo, "of the echo",
                          brief(worker / kilobyte) + " kB; echo " + brief(echo / kilobyte));
}
