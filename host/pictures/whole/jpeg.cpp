#include <algorithm>

#include "host/pictures/whole/whole.h"

namespace host::pictures {
namespace {

namespace marker {
constexpr std::uint8_t temporary = 0x01;
constexpr std::uint8_t first_restart = 0xD0;
constexpr std::uint8_t last_restart = 0xD7;
constexpr std::uint8_t start_of_image = 0xD8;
constexpr std::uint8_t end_of_image = 0xD9;
constexpr std::uint8_t start_of_scan = 0xDA;
constexpr std::uint8_t second_extension =
    0xE2;  // of several things, an index of pictures among them
}  // namespace marker

// The index of pictures is a TIFF directory behind four letters.
constexpr std::uint64_t index_name = 0x4D504600;
constexpr std::uint64_t entries_tag = 0xB002;
constexpr std::uint64_t most_tags = 16;

bool starts_frame(std::uint8_t code) {
    // Among these stand three that are none: tables of Huffman codes, an extension, arithmetic.
    return code >= 0xC0 && code <= 0xCF && code != 0xC4 && code != 0xC8 && code != 0xCC;
}

bool stands_alone(std::uint8_t code) {
    return code == marker::temporary ||
           (code >= marker::first_restart && code <= marker::last_restart);
}

// The code of the marker that stands here, and where what follows it begins; 0: there is none.
std::uint8_t read_marker(Window& file, std::uint64_t& at) {
    if (file.byte(at) != std::uint8_t{0xFF}) {
        return 0;
    }
    while (file.byte(at) == std::uint8_t{0xFF}) {
        ++at;
    }
    const std::uint8_t code = file.byte(at).value_or(0);
    ++at;
    return code;
}

// Where the marker behind a scan's data begins; size() when the data runs to the end.
std::uint64_t end_of_scan(Window& file, std::uint64_t at) {
    for (;;) {
        at = file.next_ff(at);
        if (at >= file.size()) {
            return file.size();
        }
        std::uint64_t behind = at;
        const std::uint8_t code = read_marker(file, behind);
        if (code != 0 && !stands_alone(code)) {
            return at;
        }
        at = behind;
    }
}

// How many bytes the first picture has, by the index that a camera writes where a preview follows
// it; 0: nothing is said. `at`: behind the index's name.
std::uint64_t size_by_index(Window& file, std::uint64_t at) {
    const bool little = file.big_endian(at, 2) == std::uint64_t{0x4949};
    const auto number = [&](std::uint64_t place, unsigned int bytes) {
        return (little ? file.little_endian(place, bytes) : file.big_endian(place, bytes))
            .value_or(0);
    };
    const std::uint64_t directory = at + number(at + 4, 4);
    const std::uint64_t count = std::min(number(directory, 2), most_tags);
    for (std::uint64_t index = 0; index < count; ++index) {
        const std::uint64_t entry = directory + 2 + index * 12;
        if (number(entry, 2) == entries_tag) {
            return number(at + number(entry + 8, 4) + 4, 4);
        }
    }
    return 0;
}

}  // namespace

std::string why_not_whole_jpeg(Window& file) {
    if (file.big_endian(0, 2) != std::uint64_t{0xFFD8}) {
        return "it does not begin as a JPEG does";
    }
    bool frame = false;
    bool scan = false;
    std::uint64_t expected_end = file.size();
    std::uint64_t at = 2;
    for (;;) {
        const std::uint8_t code = read_marker(file, at);
        if (code == marker::end_of_image) {
            return frame && scan ? "" : "it ends before its picture";
        }
        if (at >= file.size()) {
            return "it ends before its picture does";
        }
        if (code == 0 || code == marker::start_of_image) {
            return "its segments are damaged";
        }
        if (stands_alone(code)) {
            continue;
        }
        const std::uint64_t length = file.big_endian(at, 2).value_or(0);
        if (length < 2 || length > file.size() - at) {
            return length < 2 ? "its segments are damaged" : "it ends before its picture does";
        }
        if (code == marker::second_extension && file.big_endian(at + 2, 4) == index_name) {
            expected_end = size_by_index(file, at + 6);
        }
        at += length;
        frame = frame || starts_frame(code);
        if (code == marker::start_of_scan) {
            // The data of a scan has no end marker in it: one that stands where the picture is to
            // end is its own, and not all of a large picture need be read, which takes longer than
            // all else that is done with it.
            if (frame && expected_end >= at + 2 && expected_end <= file.size() &&
                file.big_endian(expected_end - 2, 2) == std::uint64_t{0xFFD9}) {
                return "";
            }
            scan = true;
            at = end_of_scan(file, at);
        }
    }
}

}  // namespace host::pictures
