// Small files that are built as a camera's are, each with something of its own in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// With an EXIF segment that has a whole thumbnail in it. `inside` lies in the picture's data. With
// an index of pictures it says how long it is, as where a preview is to follow.
std::string sample_jpeg(std::string_view inside = "", bool with_index = false);
// One strip of data, one tile, one preview; little-endian.
std::string sample_raw(std::string_view inside = "");
std::string sample_heif(std::string_view inside = "");
