// Blends the grid of sky colours into rows and sets the sun into them.

#include "simulator/camera/pictures/sky.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "simulator/camera/pictures/noise.h"

namespace {

constexpr int cells_across = 192;
constexpr int cells_down = 160;
constexpr std::size_t grid_width = cells_across + 1;

}  // namespace

Sky::Sky(int width, int height, float horizon, const Light& light, std::uint32_t seed)
    : horizon_(horizon), height_(static_cast<float>(height)), sun_color_(light.sun) {
    const auto picture_width = static_cast<float>(width);
    sun_x_ = picture_width * (0.12F + 0.76F * light.hour);
    sun_y_ = horizon * (0.80F - 0.62F * std::sin(light.hour * std::numbers::pi_v<float>));
    sun_radius_ = 0.028F * std::min(picture_width, height_);
    grid_.reserve(grid_width * (cells_down + 1));
    for (int line = 0; line <= cells_down; ++line) {
        const float y = static_cast<float>(line) / cells_down * horizon;
        for (int column = 0; column <= cells_across; ++column) {
            const float x = static_cast<float>(column) / cells_across * picture_width;
            grid_.push_back(color_at(x, y, light, seed));
        }
    }
}

Color Sky::color_at(float x, float y, const Light& light, std::uint32_t seed) const {
    const float depth = y / horizon_;
    Color color = mix(light.zenith, light.horizon, std::pow(depth, 1.3F));

    const float distance = std::hypot(x - sun_x_, y - sun_y_) / height_;
    const float glow = 0.75F * std::exp(-distance * 9) + 0.30F * std::exp(-distance * 2.5F);
    color = mix(color, light.sun, std::min(glow, 1.0F));

    // Clouds lie flatter and closer together the nearer they are to the horizon.
    const float nearness = 1.15F - depth;
    const float cloud =
        fractal_noise(x / height_ * 1.1F / nearness + light.hour * 2, 2.6F / nearness, 5, seed);
    const float cover = std::clamp(cloud * 3.2F - 0.05F, 0.0F, 1.0F) * std::min(1.0F, nearness * 2);
    const Color lit = mix({1, 1, 1}, light.sun, 0.6F);
    return mix(color, mix(light.horizon, lit, std::min(1.0F, 0.45F + glow)), cover * 0.7F);
}

void Sky::draw_row(float y, Row& row) const {
    const float place = std::clamp(y / horizon_, 0.0F, 1.0F) * cells_down;
    const int line = std::min(static_cast<int>(place), cells_down - 1);
    const float share = place - static_cast<float>(line);
    const Color* above = &grid_[static_cast<std::size_t>(line) * grid_width];
    const Color* below = above + grid_width;

    Color left = mix(above[0], below[0], share);
    std::size_t begin = 0;
    for (std::size_t cell = 0; cell < cells_across; ++cell) {
        const Color right = mix(above[cell + 1], below[cell + 1], share);
        const std::size_t end = row.size() * (cell + 1) / cells_across;
        const auto count = static_cast<int>(end - begin);
        for (int pixel = 0; pixel < count; ++pixel) {
            const float part = static_cast<float>(pixel) / static_cast<float>(count);
            row.set(begin + static_cast<std::size_t>(pixel), mix(left, right, part));
        }
        left = right;
        begin = end;
    }
    draw_sun(y, row);
}

void Sky::draw_sun(float y, Row& row) const {
    const float reach = sun_radius_ + 1;
    if (std::abs(y - sun_y_) > reach) {
        return;
    }
    const auto last = static_cast<float>(row.size()) - 1;
    const auto begin = static_cast<std::size_t>(std::clamp(sun_x_ - reach, 0.0F, last));
    const auto end = static_cast<std::size_t>(std::clamp(sun_x_ + reach, 0.0F, last));
    for (std::size_t x = begin; x <= end; ++x) {
        const float distance = std::hypot(static_cast<float>(x) - sun_x_, y - sun_y_);
        const float cover = std::clamp(sun_radius_ - distance + 0.5F, 0.0F, 1.0F);
        row.set(x, mix(row.at(x), mix(sun_color_, {1, 1, 1}, 0.6F), cover));
    }
}
