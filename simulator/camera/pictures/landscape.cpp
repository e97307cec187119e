// Puts sky, hills, their mirror image in the lake and the counter together.

#include "simulator/camera/pictures/landscape.h"

#include <algorithm>
#include <cmath>

#include "simulator/camera/pictures/noise.h"

namespace {

constexpr float waterline_share = 0.66F;

// From the far mountains to the near shore.
constexpr Ridge::Shape shapes[] = {
    {0.42F, 1.1F, 0.10F, 0},     {0.30F, 1.6F, 0.25F, 0},     {0.22F, 1.9F, 0.45F, 0},
    {0.17F, 2.1F, 0.70F, 0.02F}, {0.11F, 1.7F, 0.85F, 0.05F},
};

}  // namespace

Landscape::Landscape(int width, int height, unsigned seed, unsigned counter)
    : height_(static_cast<float>(height)),
      waterline_(height_ * waterline_share),
      seed_(seed),
      light_(light_of_shot(counter)),
      sky_(width, height, waterline_, light_, seed),
      digits_(width, height, counter) {
    constexpr auto count = static_cast<float>(std::size(shapes));
    for (const Ridge::Shape& shape : shapes) {
        const auto index = static_cast<std::uint32_t>(ridges_.size());
        const float nearness = static_cast<float>(index) / (count - 1);
        const Color crest = mix(light_.far_hill, light_.near_hill, nearness);
        Ridge ridge(width, height, waterline_, shape, mixed(index, seed));
        ridge.paint(crest, mix(crest, light_.horizon, 0.55F * (1 - nearness)));
        ridges_.push_back(std::move(ridge));
    }
}

void Landscape::draw_row(int y, Row& row) const {
    const auto line = static_cast<float>(y);
    if (line < waterline_) {
        draw_land(line, row);
    } else {
        draw_water(line, row);
    }
    digits_.draw_row(line, row);
}

void Landscape::draw_land(float y, Row& row) const {
    sky_.draw_row(y, row);
    for (const Ridge& ridge : ridges_) {
        ridge.draw_row(y, row);
    }
}

void Landscape::draw_water(float y, Row& row) const {
    // Waves look longer and move the mirror image further the nearer they are.
    const float depth = (y - waterline_) / (height_ - waterline_);
    const float wave = fractal_noise(std::log(depth + 0.02F) * 22, 0.5F, 4, mixed(2, seed_));
    const float mirrored = waterline_ - (y - waterline_) + wave * depth * 0.05F * height_;
    draw_land(std::min(mirrored, waterline_), row);

    const Color water = mix(light_.zenith, light_.near_hill, 0.6F);
    const float share = 0.18F + 0.30F * depth + 0.10F * wave;
    for (std::size_t x = 0; x < row.size(); ++x) {
        row.set(x, mix(row.at(x), water, share));
    }
}
