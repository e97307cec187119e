// The line of a range of hills, and the trees on it.

#include "simulator/camera/pictures/ridge.h"

#include <algorithm>
#include <cmath>

#include "simulator/camera/pictures/noise.h"

Ridge::Ridge(int width, int height, float waterline, const Shape& shape, std::uint32_t seed)
    : waterline_(waterline), crest_line_(static_cast<std::size_t>(width)) {
    const auto picture_height = static_cast<float>(height);
    for (std::size_t x = 0; x < crest_line_.size(); ++x) {
        const float place = static_cast<float>(x) / picture_height;
        const float middle = static_cast<float>(x) / static_cast<float>(width) * 2 - 1;
        // Folding the noise gives sharp crests and round valleys.
        const float hills = 1 - std::abs(fractal_noise(place * shape.roughness, 0.5F, 9, seed)) * 2;
        const float rise = 1 - shape.valley * (1 - middle * middle);
        crest_line_[x] = waterline - shape.height * picture_height * hills * rise;
    }
    if (shape.trees > 0) {
        plant_trees(height, shape.trees, mixed(1, seed));
    }
    top_ = *std::min_element(crest_line_.begin(), crest_line_.end());
}

void Ridge::plant_trees(int height, float tree_height, std::uint32_t seed) {
    const std::vector<float> ground = crest_line_;
    const auto width = static_cast<float>(ground.size());
    const float spacing = std::max(1.0F, tree_height * static_cast<float>(height) * 0.16F);
    const auto count = static_cast<std::uint32_t>(width / spacing) + 1;
    for (std::uint32_t tree = 0; tree < count; ++tree) {
        const float trunk = spacing * (static_cast<float>(tree) + chance(tree, seed));
        const float tall = tree_height * static_cast<float>(height) *
                           (0.45F + 0.55F * chance(tree, mixed(1, seed)));
        const float reach = tall * 0.2F;
        const auto begin = static_cast<std::size_t>(std::max(0.0F, trunk - reach));
        const auto end = static_cast<std::size_t>(std::clamp(trunk + reach + 1, 0.0F, width));
        for (std::size_t x = begin; x < end; ++x) {
            const float away = std::abs(static_cast<float>(x) - trunk) / reach;
            const float branches = away * 5 - std::floor(away * 5);
            const float tip = ground[x] - tall * (1 - away) + tall * 0.1F * branches;
            crest_line_[x] = std::min(crest_line_[x], std::max(tip, ground[x] - tall));
        }
    }
}

void Ridge::paint(const Color& crest, const Color& foot) {
    crest_ = crest;
    foot_ = foot;
}

void Ridge::draw_row(float y, Row& row) const {
    if (y + 0.5F < top_) {
        return;
    }
    const float depth = std::clamp((y - top_) / std::max(waterline_ - top_, 1.0F), 0.0F, 1.0F);
    const Color color = mix(crest_, foot_, depth * depth);
    for (std::size_t x = 0; x < row.size(); ++x) {
        float cover = y + 0.5F - crest_line_[x];
        cover = cover < 0 ? 0 : cover;
        cover = cover > 1 ? 1 : cover;
        row.red[x] += (color.red - row.red[x]) * cover;
        row.green[x] += (color.green - row.green[x]) * cover;
        row.blue[x] += (color.blue - row.blue[x]) * cover;
    }
}
