#pragma once

#include <cstdint>

#include "tests/explore/clocks.h"

namespace explore {

struct Fiber;

inline std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
    std::uint64_t hash = (a ^ (b + 0x9E3779B97F4A7C15ULL)) * 0xFF51AFD7ED558CCDULL;
    hash ^= hash >> 32;
    return hash * 0xC4CEB9FE1A85EC53ULL ^ hash >> 29;
}

// Something that threads meet at: a mutex, an atomic, a condition variable, a stream, the camera.
struct Object {
    const void* address;
    std::uint32_t run;
    Fiber* owner;           // of a mutex
    std::uint64_t written;  // everything that led to the last change of the object
    std::uint64_t reads;    // the looks at it since then, in no order
    Clock clock;            // what is known to whoever acquires it
};

// The object at an address; new in each run.
Object& object_at(const void* address);

// Forgets all objects, for the next run.
void forget_objects();

}  // namespace explore
