// Is a picture all there? Looks at its structure, not at its pixels, and takes time and memory that
// are bounded whatever the bytes are.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/pictures/whole/window.h"
#include "host/values/picture.h"

namespace host::pictures {

// What a file of this name is, by its ending, whatever its case.
Format format_of(std::string_view name);
Kind kind_of(Format format);

// What is wrong with it, a few words; empty: nothing. Its format and `name` say what it should be.
std::string why_not_whole(int file, std::uint64_t size, std::string_view name);

// Its main image reaches its end marker. What lies behind is allowed; a thumbnail does not count.
std::string why_not_whole_jpeg(Window& file);

// The directories, and the strips and tiles that they name, lie inside the file.
std::string why_not_whole_tiff(Window& file);

// The boxes fill the file, and data is among them.
std::string why_not_whole_boxes(Window& file);

}  // namespace host::pictures
