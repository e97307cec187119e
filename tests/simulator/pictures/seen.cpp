// Pixels of pictures that were read back.

#include "tests/simulator/pictures/seen.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <jpeglib.h>

namespace {

struct Part {
    Part(const Seen& seen, double left, double top, double right, double bottom)
        : begin_x(static_cast<int>(left * seen.width)),
          begin_y(static_cast<int>(top * seen.height)),
          end_x(static_cast<int>(right * seen.width)),
          end_y(static_cast<int>(bottom * seen.height)) {}

    int begin_x;
    int begin_y;
    int end_x;
    int end_y;
};

int byte_at(const Seen& seen, int x, int y, int color) {
    const auto place = (static_cast<std::size_t>(y) * static_cast<std::size_t>(seen.width) +
                        static_cast<std::size_t>(x)) *
                           3 +
                       static_cast<std::size_t>(color);
    return static_cast<unsigned char>(seen.pixels[place]);
}

}  // namespace

double Seen::mean(int color, double left, double top, double right, double bottom) const {
    const Part part(*this, left, top, right, bottom);
    double sum = 0;
    for (int y = part.begin_y; y < part.end_y; ++y) {
        for (int x = part.begin_x; x < part.end_x; ++x) {
            sum += byte_at(*this, x, y, color);
        }
    }
    return sum / ((part.end_x - part.begin_x) * (part.end_y - part.begin_y));
}

Seen seen_jpeg(const std::string& path) {
    Seen seen;
    FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        ADD_FAILURE() << "no file " << path;
        return seen;
    }
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    errors.error_exit = [](j_common_ptr broken) {
        (*broken->err->output_message)(broken);
        std::abort();
    };
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_RGB;
    jpeg_start_decompress(&info);
    seen.width = static_cast<int>(info.output_width);
    seen.height = static_cast<int>(info.output_height);
    const std::size_t row_size = std::size_t{info.output_width} * 3;
    seen.pixels.resize(row_size * info.output_height);
    while (info.output_scanline < info.output_height) {
        auto* row = reinterpret_cast<JSAMPROW>(&seen.pixels[row_size * info.output_scanline]);
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    EXPECT_EQ(errors.num_warnings, 0) << path;
    jpeg_destroy_decompress(&info);
    EXPECT_EQ(std::fgetc(file), EOF) << "bytes behind the end of " << path;
    std::fclose(file);
    return seen;
}

Seen seen_ppm(const std::string& bytes) {
    Seen seen;
    int levels = 0;
    int header = 0;
    if (std::sscanf(bytes.c_str(), "P6 %d %d %d%n", &seen.width, &seen.height, &levels, &header) !=
        3) {
        ADD_FAILURE() << "no PPM";
        return {};
    }
    EXPECT_EQ(levels, 255);
    seen.pixels = bytes.substr(static_cast<std::size_t>(header) + 1);
    EXPECT_EQ(seen.pixels.size(),
              static_cast<std::size_t>(seen.width) * static_cast<std::size_t>(seen.height) * 3);
    return seen;
}

double difference(const Seen& one, const Seen& other, double left, double top, double right,
                  double bottom) {
    const Part part(one, left, top, right, bottom);
    double sum = 0;
    for (int y = part.begin_y; y < part.end_y; ++y) {
        for (int x = part.begin_x; x < part.end_x; ++x) {
            for (int color = 0; color < 3; ++color) {
                sum += std::abs(byte_at(one, x, y, color) - byte_at(other, x, y, color));
            }
        }
    }
    return sum / ((part.end_x - part.begin_x) * (part.end_y - part.begin_y) * 3.0);
}
