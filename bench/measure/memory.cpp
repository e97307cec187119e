// Memory of a worker that has been up for long: a million commands, in the mix of a host that polls
// and retries.

#include <algorithm>
#include <string>
#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/kernel.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr double kibibyte = 1024;
constexpr double megabyte = 1e6;

// Ten lines, each of which has one answer.
constexpr std::string_view commands =
    "PRELOAD\nPRIME\nPUMP_ACTIVE\nSET_DOWNLOAD_DIR|/Users/me/Pictures/Shots of the day\nCAPTURE\n"
    "PUMP_IDLE\nSET_FILE_TYPE|raw\nnot a command\nDISCONNECT\nPUMP_STOP\n";
constexpr long commands_at_once = 10;

// By then every thread has run once, and the pages of its code are in.
constexpr std::chrono::milliseconds first_tick{300};

// Bytes resident after so many commands, in steps.
std::vector<std::pair<double, double>> growth(const std::string& program, long step, long last) {
    Subject subject(program);
    subject.hear_until("READY|OK");
    std::vector<std::pair<double, double>> points;
    for (long count = 0; count < last;) {
        for (long end = std::min(count + step, last); count < end; count += commands_at_once) {
            subject.say(commands);
            for (long line = 0; line < commands_at_once; ++line) {
                subject.hear();
            }
        }
        if (points.empty()) {
            std::this_thread::sleep_for(first_tick);
        }
        points.emplace_back(count, *resident_bytes(subject.process()));
    }
    return points;
}

// What a folder that was never named before leaves behind: texts that the SDK's threads may still
// read are kept.
double bytes_of_a_folder_name(const std::string& program) {
    constexpr int names = 20'000;
    Subject subject(program);
    subject.hear_until("READY|OK");
    std::this_thread::sleep_for(first_tick);
    const double before = *resident_bytes(subject.process());
    for (int name = 0; name < names; ++name) {
        subject.say("SET_DOWNLOAD_DIR|/Users/me/Pictures/Shots/" + std::to_string(name) + "\n");
        subject.hear();
    }
    return (*resident_bytes(subject.process()) - before) / names;
}

}  // namespace

void measure_memory(Bench& bench) {
    {
        const Subject worker(bench.worker());
        if (!resident_bytes(worker.process())) {
            bench.results.skipped("Resident memory and its growth", "this system has no /proc");
            return;
        }
    }
    Samples worker_sizes;
    Samples echo_sizes;
    constexpr long first = 1000;
    const int rounds = bench.rounds(9, 7);
    for (int round = 0; round < rounds; ++round) {
        worker_sizes.push_back(growth(bench.worker(), first, first).back().second);
        echo_sizes.push_back(growth(bench.program("bench_echo"), first, first).back().second);
    }
    bench.results.at_most(1.3, "Resident memory", median_ratio(worker_sizes, echo_sizes),
                          "of the echo",
                          brief(median(worker_sizes) / megabyte) + " MB; echo " +
                              brief(median(echo_sizes) / megabyte));

    const long last = bench.rounds(1'000'000, 20'000);
    const Curve worker{"memory", "worker", growth(bench.worker(), first, last)};
    const Curve echo{"memory", "echo", growth(bench.program("bench_echo"), first, last)};
    bench.results.at_most(
        64, "Growth from command 1,000 to " + grouped(last),
        (worker.points.back().second - worker.points.front().second) / kibibyte, "KiB",
        "echo " + brief((echo.points.back().second - echo.points.front().second) / kibibyte));
    if (!bench.quick) {
        bench.results.plain("Memory of another download folder's name",
                            bytes_of_a_folder_name(bench.worker()), "bytes");
    }
    bench.results.curve(worker);
    bench.results.curve(echo);
}
