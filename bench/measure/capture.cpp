// A shot: how soon the button is half-pressed after the host has asked for it, and what the whole
// sequence takes beyond its two pauses.

#include <thread>

#include "bench/measure/bench.h"
#include "bench/measure/camera.h"
#include "bench/measure/one_way.h"
#include "bench/measure/statistics.h"
#include "bench/measure/subject.h"

namespace {

constexpr std::chrono::milliseconds focusing_time{700};
constexpr std::chrono::milliseconds press_time{35};

// The pauses of a shot and nothing else.
double bare_pauses() {
    const auto start = Clock::now();
    std::this_thread::sleep_for(focusing_time);
    std::this_thread::sleep_for(press_time);
    return microseconds(Clock::now() - start);
}

struct Shots {
    Samples sequences;
    Samples pauses;
    Samples to_half_press;
    Samples ways_in;
};

// Worker and echo are left alone for the length of the pauses before each line, and take turns in
// being first, so that both find the processor's caches as cold as in a studio.
Shots shoot(const Bench& bench, int count) {
    // No focus: no picture is drawn meanwhile.
    Camera camera("camera \"MODEL-A\" over USB, card in\nno focus");
    Subject worker(bench.worker(), {camera.folder() / "shots", "x", "disk"},
                   camera.environment_with_journal());
    worker.hear_until("READY|OK");
    worker.say("CONNECT\n");
    worker.hear_until("FILE_TYPE|jpeg");
    Subject echo(bench.program("bench_echo"));
    echo.hear_until("READY|OK");

    Shots shots;
    Samples asked;
    const auto ask_echo = [&] {
        bare_pauses();
        shots.ways_in.push_back(measure_one_way(echo).in);
    };
    for (int shot = 0; shot < count; ++shot) {
        if (shot % 2 == 0) {
            ask_echo();
        }
        shots.pauses.push_back(bare_pauses());
        asked.push_back(now_in_microseconds());
        worker.say("CAPTURE\n");
        worker.hear_until("REMOTE_CAPTURED|OK");
        shots.sequences.push_back(now_in_microseconds() - asked.back());
        if (shot % 2 != 0) {
            ask_echo();
        }
    }
    const std::vector<double> pressed = camera.journaled("SetDeviceProperty 0x0001 2");
    if (pressed.size() != asked.size()) {
        give_up("the journal does not have every half-press");
    }
    for (std::size_t shot = 0; shot < asked.size(); ++shot) {
        shots.to_half_press.push_back(pressed[shot] - asked[shot]);
    }
    return shots;
}

void append(Samples& all, const Samples& some) {
    all.insert(all.end(), some.begin(), some.end());
}

}  // namespace

void measure_capture(Bench& bench) {
    // Side by side, for most of the time is spent asleep.
    const int pairs = bench.rounds(5, 3);
    const int shots_each = bench.rounds(7, 2);
    std::vector<Shots> of_pair(static_cast<std::size_t>(pairs));
    std::vector<std::thread> threads;
    for (Shots& shots : of_pair) {
        threads.emplace_back([&] { shots = shoot(bench, shots_each); });
        // Out of step, so that no two of them wake at once.
        std::this_thread::sleep_for((focusing_time + press_time) * 2 / pairs / 2);
    }
    Shots all;
    for (std::size_t pair = 0; pair < threads.size(); ++pair) {
        threads[pair].join();
        append(all.sequences, of_pair[pair].sequences);
        append(all.pauses, of_pair[pair].pauses);
        append(all.to_half_press, of_pair[pair].to_half_press);
        append(all.ways_in, of_pair[pair].ways_in);
    }
    constexpr double millisecond = 1e3;
    bench.results.at_most(1.002, "CAPTURE to REMOTE_CAPTURED",
                          bench.ratio(all.sequences, all.pauses), "of its two pauses",
                          brief(bench.typical(all.sequences) / millisecond) + " ms, " +
                              brief(bench.typical(all.sequences) - bench.typical(all.pauses)) +
                              " µs more than the bare pauses",
                          1);
    bench.results.at_most(
        1.5, "CAPTURE to the half-press, median", bench.ratio(all.to_half_press, all.ways_in),
        "of the echo's one way",
        brief(bench.typical(all.to_half_press)) + " µs; echo " + brief(bench.typical(all.ways_in)));
}
