#pragma once

#include <string>

// A picture as a reader sees it: three bytes a pixel, red, green and blue.
struct Seen {
    int width = 0;
    int height = 0;
    std::string pixels;

    // The mean of one colour, 0 to 255, over a part of the picture given in shares of its sides.
    double mean(int color, double left, double top, double right, double bottom) const;
};

// Decoded by libjpeg; a file that it objects to fails the test.
Seen seen_jpeg(const std::string& path);

// From the bytes of a binary PPM, as RAW developers write it.
Seen seen_ppm(const std::string& bytes);

// How far apart two pictures of one size are, over the same part of both: the mean difference of
// their bytes.
double difference(const Seen& one, const Seen& other, double left, double top, double right,
                  double bottom);
