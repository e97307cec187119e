// Writes numbers with a round pen.

#include "simulator/camera/pictures/digits.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace {

// The way of the pen for each digit: points on a field four units wide and six high, each a column
// and a line.
constexpr std::string_view pen_ways[] = {
    "103041453616050110",         "112026",     "01103041420646",
    "01103041423313334445361605", "36300444",   "400002324345361605",
    "4130100105163645433202",     "0040412426", "13020110304142331304051636454433",
    "0516364541301001031444",
};
constexpr float field_height = 6;
constexpr float advance = 5.6F;
constexpr float pen_radius = 0.42F;

}  // namespace

Digits::Digits(int width, int height, unsigned number) {
    char text[16];
    const int length = std::snprintf(text, sizeof text, "%05u", number);
    const auto picture_width = static_cast<float>(width);
    const auto picture_height = static_cast<float>(height);
    const float unit = std::min(std::min(picture_width, picture_height) * 0.085F / field_height,
                                picture_width * 0.9F / (advance * static_cast<float>(length)));
    const float top = picture_height - unit * field_height * 1.5F;
    float left = picture_width - unit * (advance * static_cast<float>(length) + 1.5F);
    radius_ = unit * pen_radius;
    for (const char* digit = text; *digit != '\0'; ++digit) {
        const std::string_view way = pen_ways[*digit - '0'];
        for (std::size_t point = 0; point + 3 < way.size(); point += 2) {
            const auto along = [&](std::size_t place) {
                return static_cast<float>(way[point + place] - '0') * unit;
            };
            strokes_.push_back({left + along(0), top + along(1), left + along(2), top + along(3)});
        }
        left += advance * unit;
    }
}

void Digits::draw_row(float y, Row& row) const {
    // The dark rim keeps the number readable on bright water.
    draw_strokes(y, radius_ * 1.5F, {0.08F, 0.09F, 0.14F}, row);
    draw_strokes(y, radius_, {1, 1, 1}, row);
}

void Digits::draw_strokes(float y, float radius, const Color& color, Row& row) const {
    const float reach = radius + 1;
    const auto last = static_cast<float>(row.size()) - 1;
    for (const Stroke& stroke : strokes_) {
        if (y < std::min(stroke.from_y, stroke.to_y) - reach ||
            y > std::max(stroke.from_y, stroke.to_y) + reach) {
            continue;
        }
        const float along_x = stroke.to_x - stroke.from_x;
        const float along_y = stroke.to_y - stroke.from_y;
        const float length_squared = along_x * along_x + along_y * along_y;
        const float left = std::min(stroke.from_x, stroke.to_x) - reach;
        const float right = std::max(stroke.from_x, stroke.to_x) + reach;
        const auto begin = static_cast<std::size_t>(std::clamp(left, 0.0F, last));
        const auto end = static_cast<std::size_t>(std::clamp(right, 0.0F, last));
        for (std::size_t x = begin; x <= end; ++x) {
            const float away_x = static_cast<float>(x) - stroke.from_x;
            const float away_y = y - stroke.from_y;
            const float share =
                std::clamp((away_x * along_x + away_y * along_y) / length_squared, 0.0F, 1.0F);
            const float distance = std::hypot(away_x - share * along_x, away_y - share * along_y);
            const float cover = std::clamp(radius - distance + 0.5F, 0.0F, 1.0F);
            row.set(x, mix(row.at(x), color, cover));
        }
    }
}
