#include "host/pictures/whole/whole.h"

namespace host::pictures {
namespace {

constexpr unsigned int most_boxes = 4096;

constexpr std::uint64_t box_type(std::string_view text) {
    std::uint64_t type = 0;
    for (const char letter : text) {
        type = type << 8 | static_cast<std::uint8_t>(letter);
    }
    return type;
}

struct Box {
    std::uint64_t size = 0;
    std::uint64_t type = 0;
};

// Of size 0: there is none here.
Box read_box(Window& file, std::uint64_t at) {
    const auto size = file.big_endian(at, 4);
    const auto type = file.big_endian(at + 4, 4);
    if (!size || !type) {
        return {};
    }
    if (*size == 0) {  // the last one, to the end; nothing but zeros is none
        return {*type == 0 ? 0 : file.size() - at, *type};
    }
    if (*size != 1) {
        return {*size < 8 ? 0 : *size, *type};
    }
    const auto large = file.big_endian(at + 8, 8);
    return {large && *large >= 16 ? *large : 0, *type};
}

}  // namespace

std::string why_not_whole_boxes(Window& file) {
    bool described = false;
    bool data = false;
    std::uint64_t at = 0;
    for (unsigned int count = 0; at < file.size(); ++count) {
        const Box box = read_box(file, at);
        if (count == 0 && box.type != box_type("ftyp")) {
            return "it does not begin as a HEIF does";
        }
        if (box.size == 0 || count == most_boxes) {
            return "its boxes are damaged";
        }
        if (box.size > file.size() - at) {
            return "it ends before its last box does";
        }
        described = described || box.type == box_type("meta") || box.type == box_type("moov");
        data = data || box.type == box_type("mdat");
        at += box.size;
    }
    return described && data ? "" : "it ends before its picture";
}

}  // namespace host::pictures
