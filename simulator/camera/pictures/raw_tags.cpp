// The entries of a DNG: the shot in a directory of its own, as EXIF has it, the rest beside the
// image.

#include "simulator/camera/pictures/raw_tags.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "simulator/camera/pictures/light.h"
#include "simulator/camera/pictures/raw_sensor.h"
#include "simulator/camera/pictures/text.h"

namespace {

// TIFF/EP's number for it, which libtiff does not know.
constexpr std::uint32_t image_number_tag = 0x9211;

constexpr std::uint16_t daylight_d65 = 21;
constexpr std::uint16_t exposed_by_hand = 1;

// From CIE XYZ to linear sRGB, the sensor's colours before its sensitivities.
constexpr float srgb_of_xyz[] = {3.2405F,  -1.5371F, -0.4985F,  //
                                 -0.9693F, 1.8760F,  0.0416F,   //
                                 0.0556F,  -0.2040F, 1.0572F};

// Sets entries of the current directory. After a failure nothing more is set.
class TiffEntries {
  public:
    explicit TiffEntries(TIFF* tiff) : tiff_(tiff) {}

    template <typename... Values>
    void set(std::uint32_t tag, Values... values) {
        complete_ = complete_ && TIFFSetField(tiff_, tag, values...) == 1;
    }
    void text(std::uint32_t tag, const std::string& value) {
        if (!value.empty()) {
            set(tag, value.c_str());
        }
    }
    bool complete() const {
        return complete_;
    }

  private:
    TIFF* tiff_;
    bool complete_ = true;
};

// Where the directory came to lie in the file; 0 after a failure.
std::uint64_t write_shot(TIFF* tiff, const CameraSimPicture& picture) {
    const Light light = light_of_shot(picture.counter);
    const std::string time = entry_time(picture.time_seconds);
    if (TIFFCreateEXIFDirectory(tiff) != 0) {
        return 0;
    }
    TiffEntries shot(tiff);
    shot.set(EXIFTAG_EXPOSURETIME, 1.0 / light.shutter);
    shot.set(EXIFTAG_FNUMBER, aperture_tenths / 10.0);
    shot.set(EXIFTAG_EXPOSUREPROGRAM, exposed_by_hand);
    const auto iso = static_cast<std::uint16_t>(light.iso);
    shot.set(EXIFTAG_ISOSPEEDRATINGS, 1, &iso);
    shot.set(EXIFTAG_FOCALLENGTH, static_cast<double>(focal_length_mm));
    shot.text(EXIFTAG_DATETIMEORIGINAL, time);
    shot.text(EXIFTAG_DATETIMEDIGITIZED, time);
    shot.text(EXIFTAG_OFFSETTIMEORIGINAL, "+00:00");
    std::uint64_t place = 0;
    return shot.complete() && TIFFWriteCustomDirectory(tiff, &place) == 1 ? place : 0;
}

void describe_camera(TiffEntries& entries, const CameraSimPicture& picture) {
    const std::string model = entry_text(picture.model);
    entries.text(TIFFTAG_MAKE, "Virtual");
    entries.text(TIFFTAG_MODEL, model);
    entries.text(TIFFTAG_UNIQUECAMERAMODEL, model.empty() ? "Virtual" : model);
    entries.text(TIFFTAG_CAMERASERIALNUMBER, entry_text(picture.serial));
    entries.text(TIFFTAG_DATETIME, entry_time(picture.time_seconds));
    entries.set(image_number_tag, picture.counter);
}

void describe_image(TiffEntries& entries, int width, int height) {
    static constexpr std::uint16_t pattern_size[] = {2, 2};
    static constexpr unsigned char red_green_green_blue[] = {0, 1, 1, 2};
    static constexpr unsigned char version[] = {1, 4, 0, 0};
    static constexpr unsigned char readable_since[] = {1, 1, 0, 0};
    static constexpr float black[] = {sensor_black};
    static constexpr std::uint32_t white[] = {sensor_white};
    entries.set(TIFFTAG_SUBFILETYPE, 0);
    entries.set(TIFFTAG_IMAGEWIDTH, width);
    entries.set(TIFFTAG_IMAGELENGTH, height);
    entries.set(TIFFTAG_BITSPERSAMPLE, 16);
    entries.set(TIFFTAG_SAMPLESPERPIXEL, 1);
    entries.set(TIFFTAG_ROWSPERSTRIP, 64);
    entries.set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    entries.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    entries.set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    entries.set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CFA);
    entries.set(TIFFTAG_CFAREPEATPATTERNDIM, pattern_size);
    entries.set(TIFFTAG_CFAPATTERN, 4, red_green_green_blue);
    entries.set(TIFFTAG_DNGVERSION, version);
    entries.set(TIFFTAG_DNGBACKWARDVERSION, readable_since);
    entries.set(TIFFTAG_BLACKLEVEL, 1, black);
    entries.set(TIFFTAG_WHITELEVEL, 1, white);
}

void describe_colors(TiffEntries& entries) {
    float sensor_of_xyz[std::size(srgb_of_xyz)];
    for (std::size_t index = 0; index < std::size(sensor_of_xyz); ++index) {
        sensor_of_xyz[index] = srgb_of_xyz[index] * sensor_neutral[index / 3];
    }
    entries.set(TIFFTAG_CALIBRATIONILLUMINANT1, daylight_d65);
    entries.set(TIFFTAG_COLORMATRIX1, 9, sensor_of_xyz);
    entries.set(TIFFTAG_ASSHOTNEUTRAL, 3, sensor_neutral);
}

}  // namespace

bool write_raw_tags(TIFF* tiff, const CameraSimPicture& picture, int width, int height) {
    static char name[] = "ImageNumber";
    static const TIFFFieldInfo unknown[] = {
        {image_number_tag, 1, 1, TIFF_LONG, FIELD_CUSTOM, 1, 0, name}};
    const std::uint64_t shot = write_shot(tiff, picture);
    TIFFFreeDirectory(tiff);  // or starting the next one leaks it
    if (shot == 0 || TIFFCreateDirectory(tiff) != 0 ||
        TIFFMergeFieldInfo(tiff, unknown, std::size(unknown)) != 0) {
        return false;
    }
    TiffEntries entries(tiff);
    describe_camera(entries, picture);
    describe_image(entries, width, height);
    describe_colors(entries);
    entries.set(TIFFTAG_EXIFIFD, shot);
    return entries.complete();
}
