// Draws the landscape and compresses it row by row.

#include <bit>
#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <jpeglib.h>
#include <new>
#include <vector>

#include "simulator/camera/pictures.h"
#include "simulator/camera/pictures/exif.h"
#include "simulator/camera/pictures/file.h"
#include "simulator/camera/pictures/grain.h"
#include "simulator/camera/pictures/landscape.h"

namespace {

constexpr int quality = 93;
constexpr float grain_strength = 7;  // in steps of 255

// Pixels are packed into whole words, which a compiler can do for many at once.
constexpr J_COLOR_SPACE pixel_layout =
    std::endian::native == std::endian::little ? JCS_EXT_RGBX : JCS_EXT_XBGR;

// libjpeg's error manager: keeps silent and, instead of ending the process, leaves the compression.
struct Errors : jpeg_error_mgr {
    std::jmp_buf leave;
};

[[noreturn]] void leave_compression(j_common_ptr info) {
    std::longjmp(static_cast<Errors*>(info->err)->leave, 1);
}

void say_nothing(j_common_ptr, int) {}

// libjpeg's way to the file. It always looks as if bytes had been written; the file remembers when
// they were not.
struct Destination : jpeg_destination_mgr {
    PictureFile* file;
    unsigned char buffer[1 << 16];
};

void empty_buffer(j_compress_ptr info) {
    auto* destination = static_cast<Destination*>(info->dest);
    destination->next_output_byte = destination->buffer;
    destination->free_in_buffer = sizeof destination->buffer;
}

boolean write_full_buffer(j_compress_ptr info) {
    auto* destination = static_cast<Destination*>(info->dest);
    destination->file->write(destination->buffer, sizeof destination->buffer);
    empty_buffer(info);
    return TRUE;
}

void write_rest(j_compress_ptr info) {
    auto* destination = static_cast<Destination*>(info->dest);
    destination->file->write(destination->buffer,
                             sizeof destination->buffer - destination->free_in_buffer);
}

// Everything that the compression works with, made before it starts: it may be left by a jump,
// which must not skip a destructor.
struct Drawing {
    explicit Drawing(const CameraSimPicture& picture)
        : file(picture.path),
          landscape(picture.width, picture.height, picture.seed, picture.counter),
          grain(picture.width, picture.counter),
          row(picture.width),
          pixels(row.size()),
          exif(exif_block(picture)) {}

    PictureFile file;
    Landscape landscape;
    Grain grain;
    Row row;
    std::vector<std::uint32_t> pixels;  // red in the lowest byte, then green and blue
    std::vector<unsigned char> exif;
    Destination destination{};
};

std::uint32_t level(float value) {
    value = value < 0 ? 0 : value;
    value = value > 255 ? 255 : value;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(value));
}

void draw_pixels(Drawing& drawing, int y) {
    drawing.landscape.draw_row(y, drawing.row);
    const float* red = drawing.row.red.data();
    const float* green = drawing.row.green.data();
    const float* blue = drawing.row.blue.data();
    const float* grain = drawing.grain.row(y);
    std::uint32_t* pixel = drawing.pixels.data();
    for (std::size_t x = 0; x < drawing.row.size(); ++x) {
        const float noise = grain[x] * grain_strength + 0.5F;
        pixel[x] = level(red[x] * 255 + noise) | level(green[x] * 255 + noise) << 8 |
                   level(blue[x] * 255 + noise) << 16;
    }
}

int compress(const CameraSimPicture& picture, Drawing& drawing) {
    Errors errors{};
    jpeg_compress_struct info{};
    info.err = jpeg_std_error(&errors);
    errors.error_exit = leave_compression;
    errors.emit_message = say_nothing;
    if (setjmp(errors.leave) != 0) {
        jpeg_destroy_compress(&info);
        // Sizes and settings are in order, so that only the memory can have given out.
        return ENOMEM;
    }
    jpeg_create_compress(&info);
    drawing.destination.file = &drawing.file;
    drawing.destination.init_destination = empty_buffer;
    drawing.destination.empty_output_buffer = write_full_buffer;
    drawing.destination.term_destination = write_rest;
    info.dest = &drawing.destination;
    info.image_width = static_cast<JDIMENSION>(picture.width);
    info.image_height = static_cast<JDIMENSION>(picture.height);
    info.input_components = 4;
    info.in_color_space = pixel_layout;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    info.dct_method = JDCT_FASTEST;
    info.write_JFIF_header = FALSE;  // EXIF wants to be the first segment
    jpeg_start_compress(&info, TRUE);
    jpeg_write_marker(&info, JPEG_APP0 + 1, drawing.exif.data(),
                      static_cast<unsigned>(drawing.exif.size()));
    auto* pixels = reinterpret_cast<JSAMPROW>(drawing.pixels.data());
    for (int y = 0; y < picture.height && drawing.file.error() == 0; ++y) {
        draw_pixels(drawing, y);
        jpeg_write_scanlines(&info, &pixels, 1);
    }
    if (drawing.file.error() == 0) {
        jpeg_finish_compress(&info);
    }
    jpeg_destroy_compress(&info);
    return 0;
}

}  // namespace

int camera_sim_draw_jpeg(const CameraSimPicture* picture) try {
    if (!has_drawable_size(picture->width, picture->height)) {
        return EINVAL;
    }
    Drawing drawing(*picture);
    if (drawing.exif.empty()) {
        return ENOMEM;
    }
    if (const int error = compress(*picture, drawing)) {
        return error;
    }
    return drawing.file.finish();
} catch (const std::bad_alloc&) {
    return ENOMEM;
}
