#include "host/camera/last_words.h"

#include <chrono>

namespace host {
namespace {

constexpr std::size_t longest_kept = 300;

// A crash that writes a core file takes its time to end.
constexpr std::chrono::seconds shortly{2};

bool continues_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

void LastWords::hear(std::string_view line, Time at) {
    if (line.empty()) {
        return;
    }
    std::size_t size = line.size();
    if (size > longest_kept) {
        size = longest_kept;
        while (size > 0 && continues_character(line[size])) {
            --size;
        }
    }
    line_ = line.substr(0, size);
    line_ += size < line.size() ? "..." : "";
    at_ = at;
}

std::string LastWords::before(Time end) const {
    return end - at_ <= shortly ? line_ : "";
}

}  // namespace host
