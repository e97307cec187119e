#include "tests/host/pictures/sample_files.h"

#include <initializer_list>

namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values) {
        text += static_cast<char>(value);
    }
    return text;
}

std::string entry(int tag, int type, std::size_t count, std::size_t value) {
    return little_endian(static_cast<std::size_t>(tag), 2) +
           little_endian(static_cast<std::size_t>(type), 2) + little_endian(count, 4) +
           little_endian(value, 4);
}

}  // namespace

std::string big_endian(std::size_t number, int count) {
    std::string text;
    for (int index = count - 1; index >= 0; --index) {
        text += static_cast<char>(number >> (8 * index) & 0xFF);
    }
    return text;
}

std::string little_endian(std::size_t number, int count) {
    std::string text;
    for (int index = 0; index < count; ++index) {
        text += static_cast<char>(number >> (8 * index) & 0xFF);
    }
    return text;
}

std::string segment(int code, const std::string& content) {
    return bytes({0xFF, code}) + big_endian(content.size() + 2, 2) + content;
}

std::string box(std::string_view type, const std::string& content) {
    return big_endian(content.size() + 8, 4) + std::string(type) + content;
}

std::string sample_jpeg(std::string_view inside, bool with_index) {
    const std::string frame = segment(0xC0, bytes({8, 0, 1, 0, 1, 1, 1, 0x11, 0}));
    const std::string scan = segment(0xDA, bytes({1, 1, 0, 0, 63, 0}));
    const std::string thumbnail =
        bytes({0xFF, 0xD8}) + frame + scan + "small" + bytes({0xFF, 0xD9});
    const std::string head =
        bytes({0xFF, 0xD8}) + segment(0xE1, "Exif" + std::string(2, '\0') + thumbnail);
    // A stuffed byte, restart markers and a second scan, as a progressive picture has them.
    const std::string picture = segment(0xDB, std::string(65, '\1')) + frame + scan + "data" +
                                bytes({0xFF, 0x00, 0x12, 0xFF, 0xD0, 0x34}) + std::string(inside) +
                                scan + "more" + bytes({0xFF, 0xD9});
    const auto index = [](std::size_t size) {
        const std::string directory = little_endian(2, 2) + entry(0xB001, 4, 1, 2) +
                                      entry(0xB002, 7, 32, 38) + little_endian(0, 4);
        return segment(0xE2, std::string("MPF\0II*\0", 8) + little_endian(8, 4) + directory +
                                 little_endian(0x030000, 4) + little_endian(size, 4) +
                                 std::string(24, '\0'));
    };
    const std::size_t size = head.size() + index(0).size() + picture.size();
    return head + (with_index ? index(size) : "") + picture;
}

std::string sample_raw(std::string_view inside) {
    const std::size_t first = 8;
    const std::size_t entry_size = 12;
    const std::size_t second = first + 2 + 5 * entry_size + 4;
    const std::size_t data = second + 2 + 2 * entry_size + 4;
    const std::string strip = "strip" + std::string(inside);
    const std::string preview = sample_jpeg("preview");
    std::string file = "II" + little_endian(42, 2) + little_endian(first, 4);
    file += little_endian(5, 2) + entry(0x0111, 4, 1, data) + entry(0x0117, 4, 1, strip.size()) +
            entry(0x014A, 4, 1, second) + entry(0x0201, 4, 1, data + strip.size()) +
            entry(0x0202, 4, 1, preview.size()) + little_endian(0, 4);
    file += little_endian(2, 2) + entry(0x0144, 4, 1, data + strip.size() + preview.size()) +
            entry(0x0145, 3, 1, 4) + little_endian(0, 4);
    return file + strip + preview + "tile";
}

std::string sample_heif(std::string_view inside) {
    return box("ftyp", "heic" + std::string(4, '\0') + "mif1heic") +
           box("meta", std::string(40, '\0')) + box("mdat", "data" + std::string(inside));
}
