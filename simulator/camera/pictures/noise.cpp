// Value noise: chance at the points of a grid, blended smoothly between them.

#include "simulator/camera/pictures/noise.h"

#include <cmath>

namespace {

float blend(float from, float to, float share) {
    return from + (to - from) * share;
}

float smooth(float part) {
    return part * part * part * (part * (part * 6 - 15) + 10);
}

}  // namespace

float noise(float x, float y, std::uint32_t seed) {
    const float left = std::floor(x);
    const float top = std::floor(y);
    const float across = smooth(x - left);
    const float down = smooth(y - top);
    const auto column = static_cast<std::uint32_t>(static_cast<std::int32_t>(left));
    const auto line = static_cast<std::uint32_t>(static_cast<std::int32_t>(top));
    const std::uint32_t upper = mixed(line, seed);
    const std::uint32_t lower = mixed(line + 1, seed);
    const float above = blend(chance(column, upper), chance(column + 1, upper), across);
    const float below = blend(chance(column, lower), chance(column + 1, lower), across);
    return blend(above, below, down) * 2 - 1;
}

float fractal_noise(float x, float y, int octaves, std::uint32_t seed) {
    float sum = 0;
    float strength = 0.5F;
    for (int octave = 0; octave < octaves; ++octave) {
        sum += strength * noise(x, y, mixed(static_cast<std::uint32_t>(octave), seed));
        strength /= 2;
        x *= 2;
        y *= 2;
    }
    return sum;
}
