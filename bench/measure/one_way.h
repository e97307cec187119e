#pragma once

#include <chrono>

#include "bench/measure/subject.h"

// The two halves of a round trip, in microseconds.
struct OneWay {
    double in;   // a line written to a line in the main thread's hands
    double out;  // from there to a line in the host's hands
};

// On the clock that the bare programs stamp their lines with.
inline double now_in_microseconds() {
    return microseconds(std::chrono::steady_clock::now().time_since_epoch());
}

// The echo writes the nanosecond, on the same clock, at which its main thread had the line.
inline OneWay measure_one_way(Subject& echo) {
    constexpr double nanoseconds_per_microsecond = 1e3;
    const double written = now_in_microseconds();
    echo.say("STAMP\n");
    const double taken = std::stod(std::string(echo.hear())) / nanoseconds_per_microsecond;
    return {taken - written, now_in_microseconds() - taken};
}
