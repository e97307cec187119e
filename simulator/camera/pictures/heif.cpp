// The HEIF half of a RAW+HEIF pair, which this camera cannot develop.

#include <cerrno>

#include "simulator/camera/pictures.h"

int camera_sim_draw_heif(const CameraSimPicture*) {
    return ENOTSUP;
}
