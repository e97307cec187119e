// Sensor noise, drawn once and read again and again.

#include "simulator/camera/pictures/grain.h"

#include "simulator/camera/pictures/noise.h"

namespace {

constexpr std::uint32_t places = 1U << 16;

}  // namespace

Grain::Grain(int width, std::uint32_t seed)
    : seed_(seed), strip_(places + static_cast<std::size_t>(width)) {
    std::uint32_t place = 0;
    for (float& value : strip_) {
        // The sum of three throws is close to the bell curve of real noise.
        const float sum = chance(place, seed) + chance(place + 1, seed) + chance(place + 2, seed);
        value = sum / 1.5F - 1;
        place += 3;
    }
}

const float* Grain::row(int y) const {
    return strip_.data() + mixed(static_cast<std::uint32_t>(y), seed_) % places;
}
