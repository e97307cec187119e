// Small files that are built as a camera's are, each with something of its own in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// With an EXIF segment that has a whole thumbnail in it. `inside` lies in the picture's data.
std::string sample_jpeg(std::string_view inside = "");
// One strip of data, one tile, one preview; little-endian.
std::string sample_raw(std::string_view inside = "");
std::string sample_heif(std::string_view inside = "");
