// The picture of a RAW file: the one that the camera has put into it, or a quick development.
#pragma once

#include <optional>

#include "tether/preview/jpeg.h"

namespace preview {

// Upright. Nothing when the file is no RAW that is known, or damaged.
std::optional<Bitmap> read_raw(Bytes file, std::size_t longer_side);

}  // namespace preview
