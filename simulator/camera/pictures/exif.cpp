// What the JPEG says about itself.

#include "simulator/camera/pictures/exif.h"

#include <cstdlib>
#include <cstring>
#include <libexif/exif-data.h>
#include <memory>
#include <string>

#include "simulator/camera/pictures/light.h"
#include "simulator/camera/pictures/text.h"

namespace {

// TIFF/EP's number for it, which EXIF took over without a name of its own.
constexpr auto image_number = static_cast<ExifTag>(0x9211);

constexpr ExifShort upright = 1;
constexpr ExifShort inch = 2;
constexpr ExifShort srgb = 1;
constexpr ExifShort manual_exposure = 1;

// Adds entries to a block. After a failed allocation nothing more is added, and complete() is
// false.
class ExifEntries {
  public:
    explicit ExifEntries(ExifData* data) : data_(data) {}

    void text(ExifIfd place, ExifTag tag, const std::string& value) {
        if (value.empty()) {
            return;
        }
        if (ExifEntry* entry = add(place, tag, EXIF_FORMAT_ASCII, value.size() + 1)) {
            std::memcpy(entry->data, value.c_str(), value.size() + 1);
        }
    }
    void undefined(ExifIfd place, ExifTag tag, const std::string& value) {
        if (ExifEntry* entry = add(place, tag, EXIF_FORMAT_UNDEFINED, value.size())) {
            std::memcpy(entry->data, value.data(), value.size());
        }
    }
    void number(ExifIfd place, ExifTag tag, ExifShort value) {
        if (ExifEntry* entry = add(place, tag, EXIF_FORMAT_SHORT, 1)) {
            exif_set_short(entry->data, byte_order, value);
        }
    }
    void long_number(ExifIfd place, ExifTag tag, ExifLong value) {
        if (ExifEntry* entry = add(place, tag, EXIF_FORMAT_LONG, 1)) {
            exif_set_long(entry->data, byte_order, value);
        }
    }
    void fraction(ExifIfd place, ExifTag tag, ExifLong numerator, ExifLong denominator) {
        if (ExifEntry* entry = add(place, tag, EXIF_FORMAT_RATIONAL, 1)) {
            exif_set_rational(entry->data, byte_order, {numerator, denominator});
        }
    }
    bool complete() const {
        return complete_;
    }

    static constexpr ExifByteOrder byte_order = EXIF_BYTE_ORDER_INTEL;

  private:
    ExifEntry* add(ExifIfd place, ExifTag tag, ExifFormat format, std::size_t components) {
        ExifEntry* entry = complete_ ? exif_entry_new() : nullptr;
        const std::size_t size = components * exif_format_get_size(format);
        auto* bytes =
            entry != nullptr ? static_cast<unsigned char*>(std::calloc(1, size)) : nullptr;
        if (bytes == nullptr) {
            complete_ = false;
            exif_entry_unref(entry);
            return nullptr;
        }
        entry->tag = tag;
        entry->format = format;
        entry->components = components;
        entry->data = bytes;
        entry->size = static_cast<unsigned>(size);
        exif_content_add_entry(data_->ifd[place], entry);
        exif_entry_unref(entry);  // the content holds it now
        return entry;
    }

    ExifData* data_;
    bool complete_ = true;
};

void add_camera(ExifEntries& entries, const CameraSimPicture& picture) {
    const std::string time = entry_time(picture.time_seconds);
    entries.text(EXIF_IFD_0, EXIF_TAG_MAKE, "Virtual");
    entries.text(EXIF_IFD_0, EXIF_TAG_MODEL, entry_text(picture.model));
    entries.number(EXIF_IFD_0, EXIF_TAG_ORIENTATION, upright);
    entries.fraction(EXIF_IFD_0, EXIF_TAG_X_RESOLUTION, 300, 1);
    entries.fraction(EXIF_IFD_0, EXIF_TAG_Y_RESOLUTION, 300, 1);
    entries.number(EXIF_IFD_0, EXIF_TAG_RESOLUTION_UNIT, inch);
    entries.text(EXIF_IFD_0, EXIF_TAG_DATE_TIME, time);
    entries.text(EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, time);
    entries.text(EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_DIGITIZED, time);
    entries.text(EXIF_IFD_EXIF, EXIF_TAG_OFFSET_TIME, "+00:00");
    entries.text(EXIF_IFD_EXIF, EXIF_TAG_OFFSET_TIME_ORIGINAL, "+00:00");
    entries.text(EXIF_IFD_EXIF, EXIF_TAG_BODY_SERIAL_NUMBER, entry_text(picture.serial));
    entries.long_number(EXIF_IFD_EXIF, image_number, picture.counter);
}

void add_shot(ExifEntries& entries, const CameraSimPicture& picture) {
    const Light light = light_of_shot(picture.counter);
    entries.fraction(EXIF_IFD_EXIF, EXIF_TAG_EXPOSURE_TIME, 1, light.shutter);
    entries.fraction(EXIF_IFD_EXIF, EXIF_TAG_FNUMBER, aperture_tenths, 10);
    entries.number(EXIF_IFD_EXIF, EXIF_TAG_EXPOSURE_PROGRAM, manual_exposure);
    entries.number(EXIF_IFD_EXIF, EXIF_TAG_ISO_SPEED_RATINGS, static_cast<ExifShort>(light.iso));
    entries.fraction(EXIF_IFD_EXIF, EXIF_TAG_FOCAL_LENGTH, focal_length_mm, 1);
    entries.undefined(EXIF_IFD_EXIF, EXIF_TAG_EXIF_VERSION, "0231");
    entries.undefined(EXIF_IFD_EXIF, EXIF_TAG_FLASH_PIX_VERSION, "0100");
    entries.undefined(EXIF_IFD_EXIF, EXIF_TAG_COMPONENTS_CONFIGURATION, {1, 2, 3, 0});
    entries.number(EXIF_IFD_EXIF, EXIF_TAG_COLOR_SPACE, srgb);
    entries.long_number(EXIF_IFD_EXIF, EXIF_TAG_PIXEL_X_DIMENSION,
                        static_cast<ExifLong>(picture.width));
    entries.long_number(EXIF_IFD_EXIF, EXIF_TAG_PIXEL_Y_DIMENSION,
                        static_cast<ExifLong>(picture.height));
}

}  // namespace

std::vector<unsigned char> exif_block(const CameraSimPicture& picture) {
    const std::unique_ptr<ExifData, void (*)(ExifData*)> data(exif_data_new(), exif_data_unref);
    if (data == nullptr) {
        return {};
    }
    exif_data_set_byte_order(data.get(), ExifEntries::byte_order);
    ExifEntries entries(data.get());
    add_camera(entries, picture);
    add_shot(entries, picture);

    unsigned char* bytes = nullptr;
    unsigned size = 0;
    if (entries.complete()) {
        exif_data_save_data(data.get(), &bytes, &size);
    }
    std::vector<unsigned char> block(bytes, bytes + size);
    std::free(bytes);
    return block;
}
