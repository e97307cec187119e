#include "tether/preview/raw.h"

#include <algorithm>
#include <libraw/libraw.h>
#include <memory>

namespace preview {
namespace {

struct ClosedRaw {
    void operator()(libraw_data_t* raw) const {
        libraw_close(raw);
    }
    void operator()(libraw_processed_image_t* image) const {
        libraw_dcraw_clear_mem(image);
    }
};
using Raw = std::unique_ptr<libraw_data_t, ClosedRaw>;
using Image = std::unique_ptr<libraw_processed_image_t, ClosedRaw>;

// LibRaw's own numbers for how it lies, as EXIF has them.
int orientation_of(const libraw_data_t& raw) {
    switch (raw.sizes.flip) {
        case 3:
            return 3;
        case 5:
            return 8;
        case 6:
            return 6;
        default:
            return 1;
    }
}

std::optional<Bitmap> bitmap_of(const Image& image) {
    if (!image || image->type != LIBRAW_IMAGE_BITMAP || image->colors != 3 || image->bits != 8) {
        return std::nullopt;
    }
    return Bitmap{image->width, image->height, {image->data, image->data + image->data_size}};
}

std::optional<Bitmap> shown_by_camera(libraw_data_t& raw, std::size_t longer_side) {
    int error = 0;
    if (libraw_unpack_thumb(&raw) != LIBRAW_SUCCESS) {
        return std::nullopt;
    }
    const Image image(libraw_dcraw_make_mem_thumb(&raw, &error));
    const auto bitmap = image && image->type == LIBRAW_IMAGE_JPEG
                            ? read_jpeg({image->data, image->data_size}, longer_side)
                            : bitmap_of(image);
    return bitmap ? std::optional(upright(made_smaller(*bitmap, longer_side), orientation_of(raw)))
                  : std::nullopt;
}

std::optional<Bitmap> developed(libraw_data_t& raw, std::size_t longer_side) {
    int error = 0;
    // A quarter of the work, where that leaves enough.
    const std::size_t side = std::max(raw.sizes.width, raw.sizes.height);
    raw.params.half_size = side >= 2 * longer_side ? 1 : 0;
    raw.params.use_camera_wb = 1;
    if (libraw_unpack(&raw) != LIBRAW_SUCCESS || libraw_dcraw_process(&raw) != LIBRAW_SUCCESS) {
        return std::nullopt;
    }
    const auto bitmap = bitmap_of(Image(libraw_dcraw_make_mem_image(&raw, &error)));
    return bitmap ? std::optional(made_smaller(*bitmap, longer_side)) : std::nullopt;
}

}  // namespace

std::optional<Bitmap> read_raw(Bytes file, std::size_t longer_side) {
    const Raw raw(libraw_init(0));
    // Nothing is written there; the library only forgot to say so.
    if (!raw || libraw_open_buffer(raw.get(), const_cast<std::uint8_t*>(file.data), file.size) !=
                    LIBRAW_SUCCESS) {
        return std::nullopt;
    }
    auto bitmap = shown_by_camera(*raw, longer_side);
    return bitmap ? bitmap : developed(*raw, longer_side);
}

}  // namespace preview
