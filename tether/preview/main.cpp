// tether-preview: reads a picture from standard input, which must be a file, and writes a small
// JPEG of it to standard output. A program of its own: a damaged file may bring it down, or make it
// grow or run until the system ends it, and the camera does not notice.
#include <cstdint>
#include <cstdio>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tether/preview/jpeg.h"
#if WITH_RAW
#include "tether/preview/raw.h"
#endif

namespace {

constexpr std::size_t longer_side = 480;
constexpr rlim_t most_seconds = 10;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
constexpr rlim_t most_bytes = rlim_t{2} << 30;
#endif

void set_limit(int resource, rlim_t limit) {
    const rlimit both{limit, limit};
    setrlimit(resource, &both);
}

void set_limits() {
    set_limit(RLIMIT_CPU, most_seconds);
    set_limit(RLIMIT_CORE, 0);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    set_limit(RLIMIT_AS, most_bytes);
#endif
}

preview::Bytes standard_input() {
    struct stat found {};
    if (fstat(STDIN_FILENO, &found) != 0 || !S_ISREG(found.st_mode) || found.st_size <= 0) {
        return {};
    }
    const auto size = static_cast<std::size_t>(found.st_size);
    void* bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, STDIN_FILENO, 0);
    return bytes == MAP_FAILED ? preview::Bytes{}
                               : preview::Bytes{static_cast<const std::uint8_t*>(bytes), size};
}

std::optional<preview::Bitmap> preview_of(preview::Bytes file) {
    if (preview::is_jpeg(file)) {
        const auto bitmap = preview::read_jpeg(file, longer_side);
        return bitmap ? std::optional(preview::upright(preview::made_smaller(*bitmap, longer_side),
                                                       preview::orientation_of(file)))
                      : std::nullopt;
    }
#if WITH_RAW
    return file.size > 0 ? preview::read_raw(file, longer_side) : std::nullopt;
#else
    return std::nullopt;
#endif
}

}  // namespace

int main() {
    set_limits();
    const auto bitmap = preview_of(standard_input());
    if (!bitmap) {
        return 1;
    }
    const auto jpeg = preview::write_jpeg(*bitmap);
    const bool written = !jpeg.empty() &&
                         std::fwrite(jpeg.data(), 1, jpeg.size(), stdout) == jpeg.size() &&
                         std::fflush(stdout) == 0;
    return written ? 0 : 1;
}
