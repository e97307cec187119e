#include "tether/replay/pictures.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <vector>

#include "host/process/clock.h"
#include "host/process/pipe.h"

namespace replay {
namespace {

using Bytes = std::string;

// Bytes as numbers, which a text would turn into a riddle.
Bytes bytes(std::initializer_list<int> values) {
    Bytes text;
    for (const int value : values) {
        text += static_cast<char>(value);
    }
    return text;
}

// A Huffman table with one code of one bit, for the symbol 0.
Bytes shortest_table(int which) {
    return bytes({0xFF, 0xC4, 0, 20, which, 1}) + Bytes(15, '\0') + bytes({0});
}

// One block whose coefficients are all 0: grey.
Bytes jpeg() {
    const Bytes quantization = bytes({0xFF, 0xDB, 0, 67, 0}) + Bytes(64, '\x01');
    const Bytes frame = bytes({0xFF, 0xC0, 0, 11, 8, 0, 8, 0, 8, 1, 1, 0x11, 0});
    const Bytes scan = bytes({0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0, 0x3F});
    return bytes({0xFF, 0xD8}) + quantization + frame + shortest_table(0) + shortest_table(0x10) +
           scan + bytes({0xFF, 0xD9});
}

Bytes little_endian(std::uint32_t value, std::size_t count) {
    Bytes text;
    for (std::size_t index = 0; index < count; ++index) {
        text += static_cast<char>(value >> (8 * index));
    }
    return text;
}

Bytes numbers(const std::vector<std::uint32_t>& values, std::size_t size) {
    Bytes text;
    for (const std::uint32_t value : values) {
        text += little_endian(value, size);
    }
    return text;
}

struct Entry {
    std::uint32_t tag;
    std::uint32_t type;
    std::uint32_t count;
    Bytes value;
};

Entry byte_entry(std::uint32_t tag, const Bytes& value) {
    return {tag, 1, static_cast<std::uint32_t>(value.size()), value};
}

Entry text_entry(std::uint32_t tag, const Bytes& value) {
    return {tag, 2, static_cast<std::uint32_t>(value.size() + 1), value + '\0'};
}

Entry short_entry(std::uint32_t tag, const std::vector<std::uint32_t>& values) {
    return {tag, 3, static_cast<std::uint32_t>(values.size()), numbers(values, 2)};
}

Entry long_entry(std::uint32_t tag, std::uint32_t value) {
    return {tag, 4, 1, little_endian(value, 4)};
}

// A digital negative, whatever a camera would call it: one strip behind one directory.
Bytes raw() {
    constexpr std::uint32_t side = 32;
    constexpr std::uint32_t strip_bytes = side * side * 2;
    constexpr std::uint32_t strip_at = 8;
    const std::vector<std::uint32_t> unit_matrix{1, 1, 0, 1, 0, 1, 0, 1, 1,
                                                 1, 0, 1, 0, 1, 0, 1, 1, 1};
    const std::vector<Entry> entries{
        long_entry(254, 0),
        long_entry(256, side),
        long_entry(257, side),
        short_entry(258, {16}),
        short_entry(259, {1}),      // not compressed
        short_entry(262, {32803}),  // a colour filter array
        text_entry(271, "tether"),
        text_entry(272, "replay"),
        long_entry(273, strip_at),
        short_entry(277, {1}),
        long_entry(278, side),
        long_entry(279, strip_bytes),
        short_entry(33421, {2, 2}),
        byte_entry(33422, bytes({0, 1, 1, 2})),
        byte_entry(50706, bytes({1, 4, 0, 0})),
        text_entry(50708, "tether replay"),
        {50721, 10, 9, numbers(unit_matrix, 4)},
        short_entry(50778, {21}),
    };
    const std::uint32_t directory_at = strip_at + strip_bytes;
    const auto count = static_cast<std::uint32_t>(entries.size());
    std::uint32_t beside_at = directory_at + 2 + 12 * count + 4;
    Bytes directory = little_endian(count, 2);
    Bytes beside;
    for (const Entry& entry : entries) {
        Bytes value = entry.value;
        if (value.size() > 4) {
            beside += value + Bytes(value.size() % 2, '\0');
            value = little_endian(beside_at, 4);
            beside_at =
                directory_at + 2 + 12 * count + 4 + static_cast<std::uint32_t>(beside.size());
        }
        directory += little_endian(entry.tag, 2) + little_endian(entry.type, 2) +
                     little_endian(entry.count, 4) + value + Bytes(4 - value.size(), '\0');
    }
    return "II" + little_endian(42, 2) + little_endian(directory_at, 4) +
           Bytes(strip_bytes, '\x20') + directory + little_endian(0, 4) + beside;
}

// Boxes without a picture in them: decoders of it are rare, and nobody who brings files in looks
// further.
Bytes heif() {
    return bytes({0, 0, 0, 16}) + "ftypheic" + Bytes(4, '\0') + bytes({0, 0, 0, 12}) + "meta" +
           Bytes(4, '\0') + bytes({0, 0, 0, 16}) + "mdat" + Bytes(8, '\0');
}

}  // namespace

std::string picture_for(std::string_view name) {
    std::string kind(name.substr(std::min(name.rfind('.'), name.size())));
    std::transform(kind.begin(), kind.end(), kind.begin(), [](char byte) {
        return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
    });
    if (kind == ".JPG" || kind == ".JPEG") {
        return jpeg();
    }
    if (kind == ".ARW" || kind == ".DNG") {
        return raw();
    }
    return kind == ".HIF" || kind == ".HEIC" || kind == ".HEIF" ? heif() : "a file of a replay\n";
}

std::string make_picture(const std::filesystem::path& path, Fate fate) {
    if (fate == Fate::missing) {
        return {};
    }
    const host::Descriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    std::string picture = picture_for(path.filename().string());
    picture.resize(fate == Fate::damaged ? picture.size() / 2 : picture.size());
    if (!file.is_open() || !host::write_all(file, picture, host::TimePoint::max())) {
        return "cannot make " + path.string() + ": " + std::strerror(errno);
    }
    return {};
}

}  // namespace replay
