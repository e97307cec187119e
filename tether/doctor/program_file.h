// What a program or a library says to the loader of its system. Both formats are read everywhere:
// a bundle for the Mac is mostly made and looked at elsewhere, and the tools that come with a
// compiler are missing where a bundle is used.
//
// A file may be of any size and say anything: what is read of it and kept has a bound that is far
// beyond any real program.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tether/doctor/bytes.h"

namespace doctor {

// Of the libraries, and of the run paths, of an image.
constexpr std::size_t most_names = 256;
// In bytes: what tells the loader which libraries a program needs.
constexpr std::uint64_t largest_table = std::uint64_t{1} << 20;

// The part for one kind of processor.
struct Image {
    std::string processor;
    std::vector<std::string> libraries;  // that it needs, as it names them
    std::vector<std::string> run_paths;  // where the loader looks for them
};

struct ProgramFile {
    enum class Format { elf, mach_o };
    Format format;
    std::vector<Image> images;  // never empty; a universal file has several
};

// Nothing when the bytes are neither.
std::optional<ProgramFile> read_program(Window& bytes);
std::optional<ProgramFile> read_program(std::string_view bytes);
std::optional<ProgramFile> read_program_file(const std::filesystem::path& file);

// "macOS on arm64 and x86_64".
std::string describe(const ProgramFile& program);

}  // namespace doctor
