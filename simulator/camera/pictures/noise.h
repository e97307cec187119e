#pragma once

#include <cstdint>

// Chance that is the same on every run: a number depends on the place it is asked for, and on the
// seed.

// A well-mixed number for a place.
inline std::uint32_t mixed(std::uint32_t place, std::uint32_t seed) {
    std::uint32_t bits = place * 0x9E3779B1U ^ (seed + 0x7F4A7C15U) * 0x85EBCA6BU;
    bits = (bits ^ (bits >> 16)) * 0x7FEB352DU;
    bits = (bits ^ (bits >> 15)) * 0x846CA68BU;
    return bits ^ (bits >> 16);
}

// From 0 up to, but not including, 1.
inline float chance(std::uint32_t place, std::uint32_t seed) {
    return static_cast<float>(mixed(place, seed) >> 8) * 0x1p-24F;
}

// Smooth hills and dales between -1 and 1, about one unit apart.
float noise(float x, float y, std::uint32_t seed);

// The same with ever finer detail on top, as terrain and clouds have it. About -1 to 1.
float fractal_noise(float x, float y, int octaves, std::uint32_t seed);
