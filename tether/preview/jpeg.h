// JPEG, read small and written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "tether/preview/bitmap.h"

namespace preview {

struct Bytes {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
};

bool is_jpeg(Bytes file);

// As small as can be had while it is decoded, but not smaller than wanted. One that breaks off in
// the middle gives what there is of it.
std::optional<Bitmap> read_jpeg(Bytes file, std::size_t longer_side);

// 1 to 8; 1 when it does not say.
int orientation_of(Bytes jpeg);

// Empty when it cannot be written.
std::vector<std::uint8_t> write_jpeg(const Bitmap& bitmap);

}  // namespace preview
