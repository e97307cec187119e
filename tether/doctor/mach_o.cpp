#include "tether/doctor/mach_o.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace doctor {
namespace {

constexpr std::uint64_t mach_o_magic = 0xFEEDFACF;
constexpr std::uint64_t universal_magic = 0xCAFEBABE;  // most significant byte first
// Java's class files begin with the same number and have a version of 45 or more in this place.
constexpr std::uint64_t most_processors = 16;

constexpr std::uint64_t smallest_command = 8;
constexpr std::uint64_t command_library = 0x0C;
constexpr std::uint64_t command_weak_library = 0x80000018;
constexpr std::uint64_t command_reexported_library = 0x8000001F;
constexpr std::uint64_t command_run_path = 0x8000001C;

std::string mach_o_processor(std::uint64_t type) {
    switch (type) {
        case 0x01000007:
            return "x86_64";
        case 0x0100000C:
            return "arm64";
        default:
            return "processor " + std::to_string(type);
    }
}

// The text of a command lies within it.
void add_text(std::vector<std::string>& names, const Bytes& command) {
    if (names.size() < most_names) {
        names.push_back(command.text(command.number(8, 4)));
    }
}

std::optional<Image> read_image(const Bytes& file) {
    if (file.number(0, 4) != mach_o_magic) {
        return std::nullopt;
    }
    Image image;
    image.processor = mach_o_processor(file.number(4, 4));
    const std::uint64_t count = file.number(16, 4);
    Bytes commands = file.part(32, std::min(file.number(20, 4), largest_table));
    for (std::uint64_t index = 0; index < count; ++index) {
        const std::uint64_t size = commands.number(4, 4);
        if (size < smallest_command) {
            break;  // nor does the loader know where the next one is; 0 beyond the end
        }
        const Bytes command = commands.part(0, size);
        switch (command.number(0, 4)) {
            case command_library:
            case command_weak_library:
            case command_reexported_library:
                add_text(image.libraries, command);
                break;
            case command_run_path:
                add_text(image.run_paths, command);
                break;
            default:
                break;
        }
        commands = commands.from(size);
    }
    return image;
}

}  // namespace

std::vector<Image> read_mach_o(const Bytes& file) {
    std::vector<Image> images;
    if (auto image = read_image(file)) {
        images.push_back(std::move(*image));
    }
    const std::uint64_t count = file.big_endian(4, 4);
    if (file.big_endian(0, 4) != universal_magic || count > most_processors) {
        return images;
    }
    for (std::uint64_t index = 0; index < count; ++index) {
        const std::uint64_t entry = 8 + index * 20;
        // Within it there is no other universal file.
        const Bytes part = file.part(file.big_endian(entry + 8, 4), file.big_endian(entry + 12, 4));
        if (auto image = read_image(part)) {
            images.push_back(std::move(*image));
        }
    }
    return images;
}

}  // namespace doctor
