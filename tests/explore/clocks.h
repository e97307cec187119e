#pragma once

#include <cstdint>

namespace explore {

// Most fibers of a run: the worker's threads and the scripts beside them. Numbers 14 and 15 are
// taken by marks in the shadow.
inline constexpr int most_fibers = 14;

// How often a fiber has let others see what it did. Ticks grow from run to run and never start
// again, so that nothing has to be forgotten between two runs.
using Tick = std::uint32_t;

// What a fiber, or whoever looks at an object, knows of each fiber.
struct Clock {
    Tick at[16];

    void join(const Clock& other) {
        for (int i = 0; i < 16; ++i) {
            at[i] = at[i] < other.at[i] ? other.at[i] : at[i];
        }
    }
    void fill(Tick tick) {
        for (Tick& each : at) {
            each = tick;
        }
    }
};

// One moment of one fiber.
using Epoch = std::uint32_t;

inline constexpr int fiber_bits = 4;
inline constexpr Tick last_tick = 0xFFFFFFFFU >> fiber_bits;

inline Epoch epoch(int fiber, Tick tick) {
    return tick << fiber_bits | static_cast<Epoch>(fiber);
}
inline int fiber_of(Epoch moment) {
    return static_cast<int>(moment & ((1U << fiber_bits) - 1));
}
inline Tick tick_of(Epoch moment) {
    return moment >> fiber_bits;
}

// Whether the moment came before everything that the owner of the clock does now.
inline bool before(Epoch moment, const Clock& clock) {
    return tick_of(moment) <= clock.at[fiber_of(moment)];
}

}  // namespace explore
