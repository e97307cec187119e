// Small files that are built as a camera's are, each with something of its own in it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// With an EXIF segment that has a whole thumbnail in it. `inside` lies in the picture's data. With
// an index of pictures it says how long it is, as where a preview is to follow.
std::string sample_jpeg(std::string_view inside = "", bool with_index = false);
// One strip of data, one tile, one preview; little-endian.
std::string sample_raw(std::string_view inside = "");
std::string sample_heif(std::string_view inside = "");

// What such files are made of: numbers of so many bytes, a segment of a JPEG, a box of a HEIF.
std::string big_endian(std::size_t number, int count);
std::string little_endian(std::size_t number, int count);
std::string segment(int code, const std::string& content);
std::string box(std::string_view type, const std::string& content);
