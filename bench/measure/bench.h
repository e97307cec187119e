#pragma once

#include <filesystem>
#include <string>

#include "bench/measure/results.h"
#include "bench/measure/statistics.h"

// What is measured with, and how thoroughly.
struct Bench {
    std::filesystem::path build;
    bool quick;  // a few rounds, to find what has gone badly wrong
    Results results;

    std::string worker() const {
        return build / "Contents/MacOS/sony-worker";
    }
    std::string program(const std::string& name) const {
        return build / "bin" / name;
    }
    int rounds(int thorough, int quickly) const {
        return quick ? quickly : thorough;
    }
    // Of times: in a few rounds on a busy machine only the best one says something.
    double typical(const Samples& rounds) const {
        return quick ? best(rounds) : median(rounds);
    }
    double ratio(const Samples& rounds, const Samples& yardstick_rounds) const {
        return quick ? best(rounds) / best(yardstick_rounds)
                     : median_ratio(rounds, yardstick_rounds);
    }
};

// Each measures one thing on as many cores as it says, and adds its figures and curves.
void measure_round_trip(Bench& bench, int cores);
void measure_burst(Bench& bench, int cores);
void measure_start_and_end(Bench& bench, int cores);
void measure_memory(Bench& bench);
void measure_idle(Bench& bench);
void measure_capture(Bench& bench);
void measure_download(Bench& bench, int cores);
void measure_lines_of_threads(Bench& bench);
void measure_size(Bench& bench);
// Where the tether command was built.
void measure_serve_start(Bench& bench);
void measure_serve_ready(Bench& bench);
void measure_serve_capture(Bench& bench);
void measure_serve_picture(Bench& bench);
void measure_serve_memory(Bench& bench);
void measure_serve_flood(Bench& bench);
void measure_tap(Bench& bench);
// How cost grows; nothing is promised of these.
void measure_queue(Bench& bench);
void measure_storm(Bench& bench);
void measure_side_by_side(Bench& bench);
void measure_shutter_to_file(Bench& bench);

// Where processes cannot be kept to their cores.
constexpr int any_core = 0;

inline std::string on_cores(int cores) {
    return cores == any_core ? ", any core" : cores == 1 ? ", one core" : ", two cores";
}
