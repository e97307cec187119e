// Writes the landscape, seen through the sensor's filter, as a DNG.

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <tiffio.h>
#include <vector>

#include "simulator/camera/pictures.h"
#include "simulator/camera/pictures/file.h"
#include "simulator/camera/pictures/landscape.h"
#include "simulator/camera/pictures/raw_sensor.h"
#include "simulator/camera/pictures/raw_tags.h"

namespace {

// libtiff speaks on standard error through handlers that the whole process shares. They are
// silenced for one call: what goes wrong shows in the file's error.
class SilencedTiff {
  public:
    SilencedTiff()
        : errors_(TIFFSetErrorHandler(nullptr)), warnings_(TIFFSetWarningHandler(nullptr)) {}
    ~SilencedTiff() {
        TIFFSetErrorHandler(errors_);
        TIFFSetWarningHandler(warnings_);
    }
    SilencedTiff(const SilencedTiff&) = delete;
    SilencedTiff& operator=(const SilencedTiff&) = delete;

  private:
    TIFFErrorHandler errors_;
    TIFFErrorHandler warnings_;
};

// The file as libtiff reaches it: a new file is never read back, and its owner closes it.
PictureFile& file_of(thandle_t handle) {
    return *static_cast<PictureFile*>(handle);
}

tmsize_t read_nothing(thandle_t, void*, tmsize_t) {
    return 0;
}

tmsize_t write_file(thandle_t handle, void* bytes, tmsize_t count) {
    return file_of(handle).write(bytes, static_cast<std::size_t>(count)) ? count : -1;
}

toff_t seek_file(thandle_t handle, toff_t offset, int whence) {
    return static_cast<toff_t>(file_of(handle).seek(static_cast<off_t>(offset), whence));
}

toff_t file_size(thandle_t handle) {
    return seek_file(handle, 0, SEEK_END);
}

int leave_open(thandle_t) {
    return 0;
}

// A quarter, even, as the filter's pattern is, and not less than what RAW readers take for a
// picture.
int sensor_side(int picture_side) {
    return std::max(64, (picture_side + 7) / 8 * 2);
}

bool write_pixels(TIFF* tiff, const CameraSimPicture& picture, int width, int height) {
    const Landscape landscape(width, height, picture.seed, picture.counter);
    const Sensor sensor(width, picture.counter);
    Row row(width);
    std::vector<std::uint16_t> pixels(row.size());
    for (int y = 0; y < height; ++y) {
        landscape.draw_row(y, row);
        sensor.expose(y, row, pixels);
        if (TIFFWriteScanline(tiff, pixels.data(), static_cast<std::uint32_t>(y), 0) != 1) {
            return false;
        }
    }
    return TIFFWriteDirectory(tiff) == 1;
}

}  // namespace

int camera_sim_draw_raw(const CameraSimPicture* picture) try {
    if (!has_drawable_size(picture->width, picture->height)) {
        return EINVAL;
    }
    PictureFile file(picture->path);
    if (file.error() != 0) {
        return file.error();
    }
    const int width = sensor_side(picture->width);
    const int height = sensor_side(picture->height);
    const SilencedTiff silenced;
    std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(
        TIFFClientOpen(picture->path, "wl", &file, read_nothing, write_file, seek_file, leave_open,
                       file_size, nullptr, nullptr),
        TIFFClose);
    const bool written = tiff != nullptr && write_raw_tags(tiff.get(), *picture, width, height) &&
                         write_pixels(tiff.get(), *picture, width, height);
    tiff.reset();
    if (!written && file.error() == 0) {
        // Entries and sizes are in order, so that only the memory can have given out.
        return ENOMEM;
    }
    return file.finish();
} catch (const std::bad_alloc&) {
    return ENOMEM;
}
