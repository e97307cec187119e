// What RAW developers make of the virtual camera's RAW files.

#include <cerrno>
#include <gtest/gtest.h>
#include <tiffio.h>

#include "tests/simulator/pictures/picture_fixture.h"
#include "tests/simulator/pictures/seen.h"

namespace {

class Raw : public PictureTest {
  protected:
    std::string file = path("DSC00001.ARW");

    // As shot, without brightening, in sRGB, so that it compares with the JPEG of the same shot.
    Seen developed() const {
        return seen_ppm(output_of("dcraw", "dcraw", "-c -w -W -o 1 -g 2.4 12.92 " + file));
    }
};

TEST_F(Raw, IsRecognisedByDcraw) {
    CameraSimPicture shot = picture(file);
    shot.width = 6000;
    shot.height = 4000;
    ASSERT_EQ(draw_raw(&shot), 0);
    const std::string facts = output_of("dcraw", "dcraw", "-i -v " + file);
    for (const char* fact : {"Camera: Virtual MODEL-A", "DNG Version: 1.4.0.0",
                             "Timestamp: Sun Mar  1 12:00:00 2026", "Full size:   1500 x 1000",
                             "Output size: 1500 x 1000", "Raw colors: 3", "Filter pattern: RG/GB",
                             "Aperture: f/8.0", "Camera multipliers: 2.000000 1.000000 1.600000"}) {
        EXPECT_NE(facts.find(fact), std::string::npos) << fact << "\nis missing in\n" << facts;
    }
}

TEST_F(Raw, IsRecognisedByLibRaw) {
    const CameraSimPicture shot = picture(file);
    ASSERT_EQ(draw_raw(&shot), 0);
    const std::string facts = output_of("raw-identify", "libraw-bin", "-v " + file);
    for (const char* fact : {"Camera: Virtual MODEL-A", "DNG Version: 1.4.0.0", "Body#: 00123456",
                             "Raw colors: 3", "160 x 120"}) {
        EXPECT_NE(facts.find(fact), std::string::npos) << fact << "\nis missing in\n" << facts;
    }
    output_of("simple_dcraw", "libraw-bin", file);
    const Seen image = seen_ppm(content(file + ".ppm"));
    EXPECT_EQ(image.width, 160);
    EXPECT_EQ(image.height, 120);
}

TEST_F(Raw, ShowsWhatTheJpegOfTheSameShotShows) {
    CameraSimPicture shot = picture(file);
    shot.width = 1600;
    shot.height = 1200;
    for (const unsigned counter : {0U, 12U, 23U}) {
        shot.counter = counter;
        ASSERT_EQ(draw_raw(&shot), 0);
        const Seen raw = developed();

        const std::string beside = path("DSC00001.JPG");
        CameraSimPicture small = shot;
        small.path = beside.c_str();
        small.width = 400;
        small.height = 300;
        ASSERT_EQ(draw_jpeg(&small), 0);
        const Seen jpeg = seen_jpeg(beside);
        ASSERT_EQ(raw.width, jpeg.width);
        ASSERT_EQ(raw.height, jpeg.height);

        constexpr double size = 1.0 / 8;
        for (int block = 0; block < 64; ++block) {
            const int column = block % 8;
            const int line = block / 8;
            const double left = column * size;
            const double top = line * size;
            for (int color = 0; color < 3; ++color) {
                EXPECT_NEAR(raw.mean(color, left, top, left + size, top + size),
                            jpeg.mean(color, left, top, left + size, top + size), 6)
                    << "shot " << counter << ", block " << block << ", colour " << color;
            }
        }
    }
}

TEST_F(Raw, HasAQuarterOfThePictureHoweverOdd) {
    constexpr int sizes[][4] = {{1, 1, 64, 64},        {7, 5, 64, 64},        {257, 263, 66, 66},
                                {1003, 777, 252, 196}, {65500, 1, 16376, 64}, {1, 9001, 64, 2252}};
    for (const auto& size : sizes) {
        CameraSimPicture shot = picture(file);
        shot.width = size[0];
        shot.height = size[1];
        ASSERT_EQ(draw_raw(&shot), 0);
        const Seen image = developed();
        EXPECT_EQ(image.width, size[2]);
        EXPECT_EQ(image.height, size[3]);
        output_of("raw-identify", "libraw-bin", file + " >/dev/null");
    }
}

TEST_F(Raw, RefusesSizesThatNoPictureHas) {
    constexpr int sizes[][2] = {{0, 1}, {1, 0}, {-1, 5}, {5, -1}, {65501, 1}};
    for (const auto& size : sizes) {
        CameraSimPicture shot = picture(file);
        shot.width = size[0];
        shot.height = size[1];
        EXPECT_EQ(draw_raw(&shot), EINVAL) << size[0] << "x" << size[1];
    }
    EXPECT_TRUE(files().empty());
}

TEST_F(Raw, IsTheSameForTheSameShotOnly) {
    CameraSimPicture shot = picture(file);
    ASSERT_EQ(draw_raw(&shot), 0);
    const std::string original = content(file);
    ASSERT_EQ(draw_raw(&shot), 0);
    EXPECT_EQ(content(file), original);
    shot.counter = 2;
    ASSERT_EQ(draw_raw(&shot), 0);
    EXPECT_NE(content(file), original);
}

TEST_F(Raw, NamesCameraShotAndExposure) {
    CameraSimPicture shot = picture(file);
    shot.counter = 9999;
    ASSERT_EQ(draw_raw(&shot), 0);
    EXPECT_EQ(exiftool("-S -Make -Model -CameraSerialNumber -ImageNumber -DateTimeOriginal "
                       "-OffsetTimeOriginal -FNumber -ExposureTime -ISO -FocalLength -Warning "
                       "-Error " +
                       file),
              "Make: Virtual\n"
              "Model: MODEL-A\n"
              "CameraSerialNumber: 00123456\n"
              "ImageNumber: 9999\n"
              "DateTimeOriginal: 2026:03:01 12:00:00\n"
              "OffsetTimeOriginal: +00:00\n"
              "FNumber: 8.0\n"
              "ExposureTime: 1/250\n"
              "ISO: 100\n"
              "FocalLength: 35.0 mm\n");
}

void own_handler(const char*, const char*, va_list) {}

// libtiff keeps them for the whole process, which may use libtiff itself.
TEST_F(Raw, LeavesLibtiffsHandlersAsTheyWere) {
    TIFFErrorHandler errors = TIFFSetErrorHandler(own_handler);
    TIFFErrorHandler warnings = TIFFSetWarningHandler(own_handler);
    const CameraSimPicture shot = picture(file);
    EXPECT_EQ(draw_raw(&shot), 0);
    EXPECT_EQ(TIFFSetErrorHandler(errors), own_handler);
    EXPECT_EQ(TIFFSetWarningHandler(warnings), own_handler);
}

}  // namespace
