// A picture in memory: three bytes a pixel, red first, row by row without gaps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace preview {

struct Bitmap {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint8_t> bytes;
};

// Each pixel the mean of those that it stands for, so that its longer side has at most so many.
Bitmap made_smaller(const Bitmap& bitmap, std::size_t longer_side);

// As the viewer is to see it; the orientation is that of EXIF, 1 to 8, and 1 where it is none.
Bitmap upright(const Bitmap& bitmap, int orientation);

}  // namespace preview
