// A day's light, from five looks at the sky.

#include "simulator/camera/pictures/light.h"

#include <algorithm>

namespace {

constexpr unsigned shots_a_day = 24;

constexpr Color rgb(unsigned code) {
    return {static_cast<float>(code >> 16 & 0xFF) / 255, static_cast<float>(code >> 8 & 0xFF) / 255,
            static_cast<float>(code & 0xFF) / 255};
}

// The hour is the place in the table. Columns: zenith, horizon, sun, far hill, near hill, shutter,
// ISO.
constexpr Light looks[] = {
    {0, rgb(0x39437A), rgb(0xF6B191), rgb(0xFFE3B8), rgb(0x8E7A9E), rgb(0x1E2036), 60, 800},
    {0, rgb(0x5B93D2), rgb(0xF4E2CF), rgb(0xFFF3D6), rgb(0x8FA6C4), rgb(0x1F3A3C), 250, 200},
    {0, rgb(0x3C7FCB), rgb(0xD3E7F3), rgb(0xFFFBEE), rgb(0x86A8C6), rgb(0x22432F), 500, 100},
    {0, rgb(0x4A7FBE), rgb(0xFBE0AE), rgb(0xFFEFC0), rgb(0x9C9AA6), rgb(0x2C3A28), 250, 100},
    {0, rgb(0x31305F), rgb(0xF28A5A), rgb(0xFFD08A), rgb(0x7A5678), rgb(0x1A1626), 60, 400},
};
constexpr int last_look = static_cast<int>(std::size(looks)) - 1;

}  // namespace

Light light_of_shot(unsigned counter) {
    const float hour = static_cast<float>(counter % shots_a_day) / (shots_a_day - 1);
    const float place = hour * last_look;
    const int index = std::min(static_cast<int>(place), last_look - 1);
    const float share = place - static_cast<float>(index);
    const Light& from = looks[index];
    const Light& to = looks[index + 1];
    const Light& nearest = share < 0.5F ? from : to;
    return {hour,
            mix(from.zenith, to.zenith, share),
            mix(from.horizon, to.horizon, share),
            mix(from.sun, to.sun, share),
            mix(from.far_hill, to.far_hill, share),
            mix(from.near_hill, to.near_hill, share),
            nearest.shutter,
            nearest.iso};
}
