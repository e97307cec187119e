#include "tether/doctor/program_file.h"

#include "tether/doctor/elf.h"
#include "tether/doctor/mach_o.h"
#include "tether/doctor/regular_file.h"

namespace doctor {

std::optional<ProgramFile> read_program(Window& bytes) {
    const Bytes file(bytes);
    if (auto image = read_elf(file)) {
        return ProgramFile{ProgramFile::Format::elf, {std::move(*image)}};
    }
    if (auto images = read_mach_o(file); !images.empty()) {
        return ProgramFile{ProgramFile::Format::mach_o, std::move(images)};
    }
    return std::nullopt;
}

std::optional<ProgramFile> read_program(std::string_view bytes) {
    Window window(bytes.size(), [&](std::uint64_t offset, char* to, std::size_t count) {
        return bytes.substr(offset).copy(to, count);
    });
    return read_program(window);
}

std::optional<ProgramFile> read_program_file(const std::filesystem::path& path) {
    std::string why;
    const auto file = RegularFile::open(path, why);
    if (!file) {
        return std::nullopt;
    }
    Window window(file->size(), [&](std::uint64_t offset, char* to, std::size_t count) {
        return file->read(offset, to, count);
    });
    return read_program(window);
}

std::string describe(const ProgramFile& program) {
    std::string text = program.format == ProgramFile::Format::elf ? "Linux on " : "macOS on ";
    for (const Image& image : program.images) {
        text += (&image == &program.images.front() ? "" : " and ") + image.processor;
    }
    return text;
}

}  // namespace doctor
