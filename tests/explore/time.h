#pragma once

#include <cstdint>

namespace explore {

// Virtual nanoseconds since the run began.
using Time = std::int64_t;

inline constexpr Time never = INT64_MAX;
inline constexpr Time millisecond = 1'000'000;
inline constexpr Time second = 1000 * millisecond;

}  // namespace explore
