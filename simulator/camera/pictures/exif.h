#pragma once

#include <vector>

#include "simulator/camera/pictures.h"

// The EXIF block of a JPEG, from "Exif" on, as its APP1 segment holds it. Empty: out of memory.
std::vector<unsigned char> exif_block(const CameraSimPicture& picture);
