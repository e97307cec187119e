#include "tether/preview/bitmap.h"

#include <gtest/gtest.h>
#include <string>

namespace preview {
namespace {

// A letter is a pixel of that red.
Bitmap drawn(const std::vector<std::string>& rows) {
    Bitmap bitmap;
    bitmap.width = rows.front().size();
    bitmap.height = rows.size();
    for (const std::string& row : rows) {
        for (const char letter : row) {
            bitmap.bytes.insert(bitmap.bytes.end(), {static_cast<std::uint8_t>(letter), 0, 255});
        }
    }
    return bitmap;
}

std::string seen(const Bitmap& bitmap) {
    EXPECT_EQ(bitmap.bytes.size(), bitmap.width * bitmap.height * 3);
    std::string text;
    for (std::size_t pixel = 0; pixel < bitmap.width * bitmap.height; ++pixel) {
        text += (pixel > 0 && pixel % bitmap.width == 0) ? " " : "";
        text += static_cast<char>(bitmap.bytes[pixel * 3]);
    }
    return text;
}

// What the camera wrote in which orientation, and how the letter F looks then.
TEST(Bitmap, IsTurnedAsExifSays) {
    const std::vector<std::pair<int, std::vector<std::string>>> turned{
        {1, {"###", "#..", "##.", "#..", "#.."}}, {2, {"###", "..#", ".##", "..#", "..#"}},
        {3, {"..#", "..#", ".##", "..#", "###"}}, {4, {"#..", "#..", "##.", "#..", "###"}},
        {5, {"#####", "#.#..", "#...."}},         {6, {"#....", "#.#..", "#####"}},
        {7, {"....#", "..#.#", "#####"}},         {8, {"#####", "..#.#", "....#"}},
    };
    for (const auto& [orientation, rows] : turned) {
        EXPECT_EQ(seen(upright(drawn(rows), orientation)), "### #.. ##. #.. #..") << orientation;
    }
    EXPECT_EQ(seen(upright(drawn({"ab"}), 0)), "ab");
    EXPECT_EQ(seen(upright(drawn({"ab"}), 9)), "ab");
}

TEST(Bitmap, BecomesTheMeanOfWhatIsTakenTogether) {
    EXPECT_EQ(seen(made_smaller(drawn({"aacc", "aacc"}), 2)), "ac");
    EXPECT_EQ(seen(made_smaller(drawn({"ac", "ac"}), 1)), "b");
    EXPECT_EQ(seen(made_smaller(drawn({"abc"}), 3)), "abc");
    const Bitmap narrow = made_smaller(drawn({std::string(1000, 'x')}), 480);
    EXPECT_EQ(narrow.width, 480U);
    EXPECT_EQ(narrow.height, 1U);
}

}  // namespace
}  // namespace preview
