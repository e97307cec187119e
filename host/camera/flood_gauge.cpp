#include "host/camera/flood_gauge.h"

namespace host {
namespace {

constexpr std::size_t most_lines = 50'000;
constexpr std::size_t most_bytes = std::size_t{32} << 20;
constexpr std::chrono::milliseconds moment{10};

}  // namespace

void FloodGauge::add(std::size_t lines, std::size_t bytes, Time at) {
    while (!last_second_.empty() && last_second_.front().begins + std::chrono::seconds(1) <= at) {
        lines_ -= last_second_.front().lines;
        bytes_ -= last_second_.front().bytes;
        last_second_.pop_front();
    }
    if (last_second_.empty() || last_second_.back().begins + moment <= at) {
        last_second_.push_back({at, 0, 0});
    }
    last_second_.back().lines += lines;
    last_second_.back().bytes += bytes;
    lines_ += lines;
    bytes_ += bytes;
}

const char* FloodGauge::flood() const {
    return lines_ >= most_lines   ? "50,000 lines within 1 s"
           : bytes_ >= most_bytes ? "32 MiB within 1 s"
                                  : nullptr;
}

}  // namespace host
