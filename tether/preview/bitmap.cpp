#include "tether/preview/bitmap.h"

#include <algorithm>
#include <array>

namespace preview {
namespace {

constexpr std::size_t colors = 3;

std::uint8_t mean(const Bitmap& bitmap, std::size_t left, std::size_t right, std::size_t top,
                  std::size_t bottom, std::size_t color) {
    std::size_t sum = 0;
    for (std::size_t y = top; y < bottom; ++y) {
        for (std::size_t x = left; x < right; ++x) {
            sum += bitmap.bytes[(y * bitmap.width + x) * colors + color];
        }
    }
    return static_cast<std::uint8_t>(sum / ((right - left) * (bottom - top)));
}

}  // namespace

Bitmap made_smaller(const Bitmap& bitmap, std::size_t longer_side) {
    const std::size_t longer = std::max(bitmap.width, bitmap.height);
    if (longer <= longer_side) {
        return bitmap;
    }
    Bitmap smaller;
    smaller.width = std::max<std::size_t>(1, bitmap.width * longer_side / longer);
    smaller.height = std::max<std::size_t>(1, bitmap.height * longer_side / longer);
    smaller.bytes.reserve(smaller.width * smaller.height * colors);
    for (std::size_t y = 0; y < smaller.height; ++y) {
        for (std::size_t x = 0; x < smaller.width; ++x) {
            for (std::size_t color = 0; color < colors; ++color) {
                smaller.bytes.push_back(mean(bitmap, x * bitmap.width / smaller.width,
                                             (x + 1) * bitmap.width / smaller.width,
                                             y * bitmap.height / smaller.height,
                                             (y + 1) * bitmap.height / smaller.height, color));
            }
        }
    }
    return smaller;
}

Bitmap upright(const Bitmap& bitmap, int orientation) {
    // Whether columns become rows, and what is mirrored after that.
    struct Turn {
        bool transposed;
        bool mirrored_x;
        bool mirrored_y;
    };
    static constexpr std::array<Turn, 8> turns{{{false, false, false},
                                                {false, true, false},
                                                {false, true, true},
                                                {false, false, true},
                                                {true, false, false},
                                                {true, true, false},
                                                {true, true, true},
                                                {true, false, true}}};
    if (orientation < 2 || orientation > static_cast<int>(turns.size())) {
        return bitmap;
    }
    const Turn turn = turns[static_cast<std::size_t>(orientation - 1)];
    Bitmap turned;
    turned.width = turn.transposed ? bitmap.height : bitmap.width;
    turned.height = turn.transposed ? bitmap.width : bitmap.height;
    turned.bytes.reserve(bitmap.bytes.size());
    for (std::size_t y = 0; y < turned.height; ++y) {
        for (std::size_t x = 0; x < turned.width; ++x) {
            const std::size_t across = turn.mirrored_x ? turned.width - 1 - x : x;
            const std::size_t down = turn.mirrored_y ? turned.height - 1 - y : y;
            const std::size_t pixel =
                turn.transposed ? across * bitmap.width + down : down * bitmap.width + across;
            const auto begin = bitmap.bytes.begin() + static_cast<std::ptrdiff_t>(pixel * colors);
            turned.bytes.insert(turned.bytes.end(), begin, begin + colors);
        }
    }
    return turned;
}

}  // namespace preview
