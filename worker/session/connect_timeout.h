#pragma once

#include <chrono>
#include <cstdint>

// How long the SDK may leave a Connect unanswered.
inline constexpr std::chrono::milliseconds connect_timeout{20000};

// The clock that the deadline is counted in: monotonic, whole milliseconds, cut off. Any thread.
inline std::int64_t steady_now_ms() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}
