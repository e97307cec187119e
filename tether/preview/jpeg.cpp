#include "tether/preview/jpeg.h"

#include <algorithm>
#include <libexif/exif-data.h>
#include <limits>
#include <memory>
#include <turbojpeg.h>
#include <type_traits>

namespace preview {
namespace {

constexpr int quality = 82;

// No camera makes larger ones.
constexpr long long most_pixels = 250'000'000;

struct Closed {
    void operator()(void* handle) const {
        tjDestroy(handle);
    }
};
using Handle = std::unique_ptr<void, Closed>;

struct Size {
    int width = 0;
    int height = 0;
};

Size scaled(Size whole, std::size_t longer_side) {
    int count = 0;
    const tjscalingfactor* factors = tjGetScalingFactors(&count);
    Size best = whole;
    for (int at = 0; at < count; ++at) {
        const Size size{TJSCALED(whole.width, factors[at]), TJSCALED(whole.height, factors[at])};
        if (std::max(size.width, size.height) >= static_cast<int>(longer_side) &&
            size.width < best.width) {
            best = size;
        }
    }
    return best;
}

}  // namespace

bool is_jpeg(Bytes file) {
    return file.size > 2 && file.data[0] == 0xFF && file.data[1] == 0xD8;
}

std::optional<Bitmap> read_jpeg(Bytes file, std::size_t longer_side) {
    const Handle handle(tjInitDecompress());
    const auto length = static_cast<unsigned long>(file.size);
    Size whole;
    int subsampling = 0;
    int colors = 0;
    if (!handle ||
        tjDecompressHeader3(handle.get(), file.data, length, &whole.width, &whole.height,
                            &subsampling, &colors) != 0 ||
        static_cast<long long>(whole.width) * whole.height > most_pixels) {
        return std::nullopt;
    }
    const Size size = scaled(whole, longer_side);
    Bitmap bitmap;
    bitmap.width = static_cast<std::size_t>(size.width);
    bitmap.height = static_cast<std::size_t>(size.height);
    bitmap.bytes.resize(bitmap.width * bitmap.height *
                        static_cast<std::size_t>(tjPixelSize[TJPF_RGB]));
    const int status = tjDecompress2(handle.get(), file.data, length, bitmap.bytes.data(),
                                     size.width, 0, size.height, TJPF_RGB,
                                     TJFLAG_FASTDCT | TJFLAG_FASTUPSAMPLE | TJFLAG_LIMITSCANS);
    if (status != 0 && tjGetErrorCode(handle.get()) != TJERR_WARNING) {
        return std::nullopt;
    }
    return bitmap;
}

int orientation_of(Bytes jpeg) {
    struct Unref {
        void operator()(ExifData* data) const {
            exif_data_unref(data);
        }
    };
    const auto size = static_cast<unsigned int>(
        std::min<std::size_t>(jpeg.size, std::numeric_limits<unsigned int>::max()));
    const std::unique_ptr<ExifData, Unref> data(exif_data_new_from_data(jpeg.data, size));
    const ExifEntry* entry =
        data ? exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION) : nullptr;
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->components != 1 ||
        entry->data == nullptr) {
        return 1;
    }
    return exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
}

std::vector<std::uint8_t> write_jpeg(const Bitmap& bitmap) {
    const Handle handle(tjInitCompress());
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    std::vector<std::uint8_t> file;
    if (handle && tjCompress2(handle.get(), bitmap.bytes.data(), static_cast<int>(bitmap.width), 0,
                              static_cast<int>(bitmap.height), TJPF_RGB, &bytes, &size, TJSAMP_420,
                              quality, TJFLAG_FASTDCT) == 0) {
        file.assign(bytes, bytes + size);
    }
    tjFree(bytes);
    return file;
}

}  // namespace preview
