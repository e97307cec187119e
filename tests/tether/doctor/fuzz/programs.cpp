// Any bytes as a program or library of Linux or macOS: what is read of it, and how much.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tests/worker/fuzz/require.h"
#include "tether/doctor/program_file.h"

namespace {

// More than the tables of sixteen parts with all their names: a bound, whatever the size.
constexpr std::size_t most_taken = std::size_t{32} << 20;

// Reads the bytes as a file that was of this size when it was opened, through a window this wide.
std::optional<doctor::ProgramFile> read(std::string_view bytes, std::uint64_t size,
                                        std::size_t width) {
    std::size_t taken = 0;
    doctor::Window window(
        size,
        [&](std::uint64_t offset, char* to, std::size_t count) {
            require(offset < size, "nothing is read beyond the end");
            taken += count;
            return offset < bytes.size() ? bytes.substr(offset).copy(to, count) : 0;
        },
        width);
    auto program = doctor::read_program(window);
    require(taken <= most_taken, "little is read of any file");
    return program;
}

void keeps_to_the_bounds(const std::vector<std::string>& names, std::string_view bytes) {
    require(names.size() <= doctor::most_names, "few names are kept");
    for (const std::string& name : names) {
        require(name.size() <= doctor::Bytes::longest_text, "no name is long");
        require(bytes.find(name) != std::string_view::npos, "every name stands in the file");
    }
}

bool same(const std::optional<doctor::ProgramFile>& one,
          const std::optional<doctor::ProgramFile>& other) {
    if (!one || !other || one->format != other->format ||
        one->images.size() != other->images.size()) {
        return !one && !other;
    }
    for (std::size_t index = 0; index < one->images.size(); ++index) {
        const doctor::Image& left = one->images[index];
        const doctor::Image& right = other->images[index];
        if (left.processor != right.processor || left.libraries != right.libraries ||
            left.run_paths != right.run_paths) {
            return false;
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    // A file that was shortened after it was opened reads as if zeros followed, and the width of
    // the window changes nothing.
    const std::size_t gone = size % 2 == 0 ? 0 : 5000;
    const std::string before = std::string(bytes) + std::string(gone, '\0');
    const auto program = doctor::read_program(before);
    require(same(program, read(bytes, before.size(), size % 3 == 0 ? 4096 : 61)),
            "how the bytes come changes nothing");
    if (program) {
        require(!program->images.empty() && program->images.size() <= 16, "a few parts");
        for (const doctor::Image& image : program->images) {
            keeps_to_the_bounds(image.libraries, bytes);
            keeps_to_the_bounds(image.run_paths, bytes);
        }
    }
    return 0;
}
