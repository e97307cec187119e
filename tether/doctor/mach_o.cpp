#include "tether/doctor/mach_o.h"

#include <optional>

namespace doctor {
namespace {

constexpr std::uint64_t magic_of_one_processor = 0xFEEDFACF;
constexpr std::uint64_t magic_universal = 0xCAFEBABE;  // most significant byte first
// Java's class files begin with the same number and have a version of 45 or more in this place.
constexpr std::uint64_t most_processors = 16;

constexpr std::uint64_t smallest_command = 8;
constexpr std::uint64_t command_library = 0x0C;
constexpr std::uint64_t command_weak_library = 0x80000018;
constexpr std::uint64_t command_reexported_library = 0x8000001F;
constexpr std::uint64_t command_run_path = 0x8000001C;

std::string name_of_processor(std::uint64_t type) {
    switch (type) {
        case 0x01000007:
            return "x86_64";
        case 0x0100000C:
            return "arm64";
        default:
            return "processor " + std::to_string(type);
    }
}

std::optional<Image> read_image(const Bytes& file) {
    if (file.number(0, 4) != magic_of_one_processor) {
        return std::nullopt;
    }
    Image image;
    image.processor = name_of_processor(file.number(4, 4));
    const std::uint64_t count = file.number(16, 4);
    Bytes command = file.from(32);
    for (std::uint64_t index = 0; index < count && command.size() > 0; ++index) {
        const std::uint64_t size = command.number(4, 4);
        switch (command.number(0, 4)) {
            case command_library:
            case command_weak_library:
            case command_reexported_library:
                image.libraries.push_back(command.text(command.number(8, 4)));
                break;
            case command_run_path:
                image.run_paths.push_back(command.text(command.number(8, 4)));
                break;
        }
        if (size < smallest_command) {
            break;
        }
        command = command.from(size);
    }
    return image;
}

}  // namespace

std::vector<Image> read_mach_o(const Bytes& file) {
    std::vector<Image> images;
    if (const auto image = read_image(file)) {
        images.push_back(*image);
    }
    const std::uint64_t count = file.big_endian(4, 4);
    if (file.big_endian(0, 4) != magic_universal || count > most_processors) {
        return images;
    }
    for (std::uint64_t index = 0; index < count; ++index) {
        const std::uint64_t entry = 8 + index * 20;
        if (const auto image = read_image(file.from(file.big_endian(entry + 8, 4)))) {
            images.push_back(*image);
        }
    }
    return images;
}

}  // namespace doctor
