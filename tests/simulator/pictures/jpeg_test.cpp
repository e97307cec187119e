// What a JPEG of the virtual camera shows and says.

#include <cerrno>
#include <climits>
#include <gtest/gtest.h>

#include "tests/simulator/pictures/picture_fixture.h"
#include "tests/simulator/pictures/seen.h"

namespace {

class Jpeg : public PictureTest {
  protected:
    std::string file = path("DSC00001.JPG");

    std::string bytes_of(const CameraSimPicture& picture) const {
        EXPECT_EQ(draw_jpeg(&picture), 0);
        return content(picture.path);
    }
    Seen seen(const CameraSimPicture& picture) const {
        EXPECT_EQ(draw_jpeg(&picture), 0);
        return seen_jpeg(picture.path);
    }
};

TEST_F(Jpeg, HasTheSizeAskedForHoweverOdd) {
    constexpr int sizes[][2] = {{1, 1},    {7, 5},    {1, 100},   {100, 1},  {17, 33},
                                {3, 2000}, {2000, 3}, {65500, 1}, {1, 65500}};
    for (const auto& size : sizes) {
        CameraSimPicture shot = picture(file);
        shot.width = size[0];
        shot.height = size[1];
        const Seen image = seen(shot);
        EXPECT_EQ(image.width, size[0]);
        EXPECT_EQ(image.height, size[1]);
    }
}

TEST_F(Jpeg, RefusesSizesThatNoJpegHas) {
    constexpr int sizes[][2] = {{0, 1}, {1, 0}, {-1, 5}, {5, -1}, {65501, 1}, {1, INT_MAX}};
    for (const auto& size : sizes) {
        CameraSimPicture shot = picture(file);
        shot.width = size[0];
        shot.height = size[1];
        EXPECT_EQ(draw_jpeg(&shot), EINVAL) << size[0] << "x" << size[1];
    }
    EXPECT_TRUE(files().empty());
}

TEST_F(Jpeg, WeighsWhatAPhotographOfThatSizeWeighs) {
    CameraSimPicture shot = picture(file);
    shot.width = 6000;
    shot.height = 4000;
    const Seen image = seen(shot);
    EXPECT_EQ(image.width, 6000);
    const std::size_t weight = content(file).size();
    EXPECT_GT(weight, 4'000'000U);
    EXPECT_LT(weight, 10'000'000U);
}

TEST_F(Jpeg, ShowsSkyAboveADarkShore) {
    CameraSimPicture shot = picture(file);
    shot.counter = 12;
    const Seen noon = seen(shot);
    const double sky_red = noon.mean(0, 0, 0, 1, 0.15);
    const double sky_blue = noon.mean(2, 0, 0, 1, 0.15);
    EXPECT_GT(sky_blue, sky_red + 20);
    EXPECT_GT(sky_blue, noon.mean(2, 0, 0.63, 1, 0.66) + 80);
}

// The first shots of two days are taken in the same light: only the number differs, and the grain.
TEST_F(Jpeg, ShowsTheCounterLargeInTheCorner) {
    CameraSimPicture shot = picture(file);
    shot.counter = 24;
    const Seen first = seen(shot);
    shot.counter = 24 * 400;
    const Seen later = seen(shot);
    EXPECT_GT(difference(first, later, 0.7, 0.85, 1, 1), 20);
    EXPECT_LT(difference(first, later, 0, 0, 1, 0.6), 5);
}

TEST_F(Jpeg, IsTheSameForTheSameShotOnly) {
    const CameraSimPicture shot = picture(file);
    const std::string original = bytes_of(shot);
    EXPECT_EQ(bytes_of(shot), original);

    const std::string elsewhere = path("DSC00002.JPG");
    EXPECT_EQ(bytes_of(picture(elsewhere)), original);

    CameraSimPicture next = shot;
    next.counter = 2;
    EXPECT_NE(bytes_of(next), original);
    CameraSimPicture other_place = shot;
    other_place.seed = 2;
    EXPECT_NE(bytes_of(other_place), original);
    EXPECT_EQ(bytes_of(shot), original);
}

TEST_F(Jpeg, NamesCameraShotAndExposure) {
    CameraSimPicture shot = picture(file);
    shot.counter = 9999;
    ASSERT_EQ(draw_jpeg(&shot), 0);
    EXPECT_EQ(exiftool("-S -Make -Model -SerialNumber -ImageNumber -DateTimeOriginal "
                       "-OffsetTimeOriginal -Orientation -ExifImageWidth -ExifImageHeight -FNumber "
                       "-ExposureTime -ISO -FocalLength -Warning -Error " +
                       file),
              "Make: Virtual\n"
              "Model: MODEL-A\n"
              "SerialNumber: 00123456\n"
              "ImageNumber: 9999\n"
              "DateTimeOriginal: 2026:03:01 12:00:00\n"
              "OffsetTimeOriginal: +00:00\n"
              "Orientation: Horizontal (normal)\n"
              "ExifImageWidth: 640\n"
              "ExifImageHeight: 480\n"
              "FNumber: 8.0\n"
              "ExposureTime: 1/250\n"
              "ISO: 100\n"
              "FocalLength: 35.0 mm\n");
}

TEST_F(Jpeg, CountsToTheLargestNumber) {
    CameraSimPicture shot = picture(file);
    shot.counter = UINT_MAX;
    EXPECT_EQ(seen(shot).width, 640);
    EXPECT_EQ(exiftool("-b -ImageNumber " + file), "4294967295");
}

TEST_F(Jpeg, LeavesTheHalfOfARawPairThatItCannotDevelop) {
    const CameraSimPicture shot = picture(file);
    EXPECT_EQ(draw_heif(&shot), ENOTSUP);
    EXPECT_TRUE(files().empty());
}

}  // namespace
