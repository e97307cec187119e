#pragma once

#include <tiffio.h>

#include "simulator/camera/pictures.h"

// What a DNG says about itself and its shot. Starts the image of a freshly opened file; false: out
// of memory, or the file could not be written.
bool write_raw_tags(TIFF* tiff, const CameraSimPicture& picture, int width, int height);
