#include "tether/doctor/elf.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace doctor {
namespace {

constexpr std::uint64_t elf_magic = 0x464C457F;  // 0x7F "ELF"
constexpr std::uint64_t class_64_little_endian = 0x0102;

constexpr std::uint64_t segment_loaded = 1;
constexpr std::uint64_t segment_dynamic = 2;
constexpr std::uint64_t segment_entry_size = 56;

constexpr std::uint64_t dynamic_end = 0;
constexpr std::uint64_t dynamic_needed = 1;
constexpr std::uint64_t dynamic_texts = 5;
constexpr std::uint64_t dynamic_texts_size = 10;
constexpr std::uint64_t dynamic_rpath = 15;
constexpr std::uint64_t dynamic_runpath = 29;
constexpr std::uint64_t dynamic_entry_size = 16;

struct Segment {
    std::uint64_t type;
    std::uint64_t offset;
    std::uint64_t address;
    std::uint64_t size;
};

// At most 65,535, and no more than the file has room for.
std::vector<Segment> segments_of(const Bytes& file) {
    std::vector<Segment> segments;
    if (file.number(54, 2) != segment_entry_size) {
        return segments;  // no loader takes another
    }
    const Bytes table = file.from(file.number(32, 8));
    const std::uint64_t count = std::min(file.number(56, 2), table.size() / segment_entry_size);
    for (std::uint64_t index = 0; index < count; ++index) {
        const Bytes entry = table.from(index * segment_entry_size);
        const std::uint64_t type = entry.number(0, 4);
        if (type == segment_loaded || type == segment_dynamic) {
            segments.push_back(
                {type, entry.number(8, 8), entry.number(16, 8), entry.number(32, 8)});
        }
    }
    return segments;
}

// What the loader is told. Of what stands there several times it takes the last; only libraries may
// be many.
struct Dynamic {
    std::vector<std::uint64_t> needed;  // like the paths: places in the table of texts
    std::optional<std::uint64_t> texts;
    std::uint64_t texts_size = ~std::uint64_t{0};
    std::optional<std::uint64_t> rpath;
    std::optional<std::uint64_t> runpath;
};

Dynamic dynamic_of(const Bytes& file, const std::vector<Segment>& segments) {
    // Only one, as the loader does: many that all cover the whole file would take for ever.
    const auto segment = std::find_if(segments.rbegin(), segments.rend(), [](const Segment& one) {
        return one.type == segment_dynamic;
    });
    Dynamic dynamic;
    if (segment == segments.rend()) {
        return dynamic;
    }
    const Bytes table = file.part(segment->offset, std::min(segment->size, largest_table));
    for (std::uint64_t at = 0; at < table.size(); at += dynamic_entry_size) {
        const std::uint64_t value = table.number(at + 8, 8);
        switch (table.number(at, 8)) {
            case dynamic_end:
                return dynamic;
            case dynamic_needed:
                if (dynamic.needed.size() < most_names) {
                    dynamic.needed.push_back(value);
                }
                break;
            case dynamic_texts:
                dynamic.texts = value;
                break;
            case dynamic_texts_size:
                dynamic.texts_size = value;
                break;
            case dynamic_rpath:
                dynamic.rpath = value;
                break;
            case dynamic_runpath:
                dynamic.runpath = value;
                break;
            default:  // what else the loader wants to know
                break;
        }
    }
    return dynamic;
}

std::uint64_t file_offset(const std::vector<Segment>& segments, std::uint64_t address) {
    for (const Segment& segment : segments) {
        if (segment.type == segment_loaded && address - segment.address < segment.size) {
            return segment.offset + (address - segment.address);
        }
    }
    return address;
}

std::string elf_processor(std::uint64_t machine) {
    switch (machine) {
        case 62:
            return "x86_64";
        case 183:
            return "arm64";
        default:
            return "processor " + std::to_string(machine);
    }
}

std::vector<std::string> split_at_colons(const std::string& paths) {
    std::vector<std::string> parts;
    std::istringstream stream(paths);
    for (std::string part; parts.size() < most_names && std::getline(stream, part, ':');) {
        parts.push_back(part);
    }
    return parts;
}

}  // namespace

std::optional<Image> read_elf(const Bytes& file) {
    if (file.number(0, 4) != elf_magic || file.number(4, 2) != class_64_little_endian) {
        return std::nullopt;
    }
    Image image;
    image.processor = elf_processor(file.number(18, 2));
    const std::vector<Segment> segments = segments_of(file);
    const Dynamic dynamic = dynamic_of(file, segments);
    if (!dynamic.texts) {
        return image;
    }
    const Bytes texts = file.part(file_offset(segments, *dynamic.texts), dynamic.texts_size);
    for (const std::uint64_t name : dynamic.needed) {
        image.libraries.push_back(texts.text(name));
    }
    // The older kind counts only where there is none of the newer.
    if (const auto run_path = dynamic.runpath ? dynamic.runpath : dynamic.rpath) {
        image.run_paths = split_at_colons(texts.text(*run_path));
    }
    return image;
}

}  // namespace doctor
