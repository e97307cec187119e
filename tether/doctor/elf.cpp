#include "tether/doctor/elf.h"

#include <map>
#include <sstream>

namespace doctor {
namespace {

constexpr std::uint64_t elf_magic = 0x464C457F;  // 0x7F "ELF"
constexpr std::uint64_t class_64_little_endian = 0x0102;

constexpr std::uint64_t segment_loaded = 1;
constexpr std::uint64_t segment_dynamic = 2;

constexpr std::uint64_t dynamic_end = 0;
constexpr std::uint64_t dynamic_needed = 1;
constexpr std::uint64_t dynamic_texts = 5;
constexpr std::uint64_t dynamic_rpath = 15;
constexpr std::uint64_t dynamic_runpath = 29;

struct Segment {
    std::uint64_t type;
    std::uint64_t offset;
    std::uint64_t address;
    std::uint64_t size;
};

std::vector<Segment> segments_of(const Bytes& file) {
    const std::uint64_t table = file.number(32, 8);
    const std::uint64_t entry_size = file.number(54, 2);
    const std::uint64_t count = file.number(56, 2);
    std::vector<Segment> segments;
    for (std::uint64_t index = 0; index < count; ++index) {
        const Bytes entry = file.from(table + index * entry_size);
        segments.push_back(
            {entry.number(0, 4), entry.number(8, 8), entry.number(16, 8), entry.number(32, 8)});
    }
    return segments;
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
    for (std::string part; std::getline(stream, part, ':');) {
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
    std::multimap<std::uint64_t, std::uint64_t> dynamic;
    for (const Segment& segment : segments) {
        const Bytes entries = file.from(segment.offset);
        for (std::uint64_t at = 0; segment.type == segment_dynamic && at < segment.size; at += 16) {
            const std::uint64_t tag = entries.number(at, 8);
            if (tag == dynamic_end) {
                break;
            }
            dynamic.emplace(tag, entries.number(at + 8, 8));
        }
    }
    const auto texts_at = dynamic.find(dynamic_texts);
    if (texts_at == dynamic.end()) {
        return image;
    }
    const Bytes texts = file.from(file_offset(segments, texts_at->second));
    const auto [needed, needed_end] = dynamic.equal_range(dynamic_needed);
    for (auto entry = needed; entry != needed_end; ++entry) {
        image.libraries.push_back(texts.text(entry->second));
    }
    // The older kind counts only where there is none of the newer.
    auto run_path = dynamic.find(dynamic_runpath);
    run_path = run_path == dynamic.end() ? dynamic.find(dynamic_rpath) : run_path;
    if (run_path != dynamic.end()) {
        image.run_paths = split_at_colons(texts.text(run_path->second));
    }
    return image;
}

}  // namespace doctor
