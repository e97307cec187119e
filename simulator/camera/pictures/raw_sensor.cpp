// Turns screen colours back into light on a sensor.

#include "simulator/camera/pictures/raw_sensor.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int levels = 4096;

// sRGB, its curve undone.
float light_of(float shown) {
    return shown <= 0.04045F ? shown / 12.92F : std::pow((shown + 0.055F) / 1.055F, 2.4F);
}

}  // namespace

Sensor::Sensor(int width, std::uint32_t seed) : grain_(width, seed) {
    for (int level = 0; level <= levels; ++level) {
        light_of_level_.push_back(light_of(static_cast<float>(level) / levels));
    }
}

void Sensor::expose(int y, const Row& row, std::vector<std::uint16_t>& pixels) const {
    const bool upper = y % 2 == 0;
    const std::vector<float>* planes[] = {upper ? &row.red : &row.green,
                                          upper ? &row.green : &row.blue};
    const float sensitivities[] = {sensor_neutral[upper ? 0 : 1], sensor_neutral[upper ? 1 : 2]};
    const float* grain = grain_.row(y);
    for (std::size_t x = 0; x < row.size(); ++x) {
        const float shown = std::clamp((*planes[x % 2])[x], 0.0F, 1.0F);
        const float light =
            light_of_level_[static_cast<std::size_t>(shown * levels)] * sensitivities[x % 2];
        // Photons arrive by chance: the brighter, the noisier, but by the square root only.
        const float noise = grain[x] * (0.0005F + 0.01F * std::sqrt(light));
        const float value = sensor_black + (sensor_white - sensor_black) * (light + noise);
        pixels[x] =
            static_cast<std::uint16_t>(std::clamp(value, 0.0F, static_cast<float>(sensor_white)));
    }
}
