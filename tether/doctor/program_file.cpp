#include "tether/doctor/program_file.h"

#include <fstream>
#include <sstream>

#include "tether/doctor/elf.h"
#include "tether/doctor/mach_o.h"

namespace doctor {

std::optional<ProgramFile> read_program(std::string_view bytes) {
    const Bytes file(bytes);
    if (const auto image = read_elf(file)) {
        return ProgramFile{ProgramFile::Format::elf, {*image}};
    }
    if (const auto images = read_mach_o(file); !images.empty()) {
        return ProgramFile{ProgramFile::Format::mach_o, images};
    }
    return std::nullopt;
}

std::optional<ProgramFile> read_program_file(const std::filesystem::path& file) {
    return read_program(bytes_of(file));
}

std::string bytes_of(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

std::string describe(const ProgramFile& program) {
    std::string text = program.format == ProgramFile::Format::elf ? "Linux on " : "macOS on ";
    for (const Image& image : program.images) {
        text += (&image == &program.images.front() ? "" : " and ") + image.processor;
    }
    return text;
}

}  // namespace doctor
