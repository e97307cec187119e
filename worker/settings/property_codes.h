#pragma once

#include <cstdint>

// Every camera property that the worker reads or writes, with the values that it knows.
namespace property {

inline constexpr std::uint32_t shutter_half_press = 0x0001;
inline constexpr std::uint32_t file_type = 0x0106;
inline constexpr std::uint32_t save_destination = 0x0119;
inline constexpr std::uint32_t pc_remote_priority = 0x011A;
inline constexpr std::uint32_t raw_pair_transfer = 0x0507;
inline constexpr std::uint32_t first_card_status = 0x0708;
inline constexpr std::uint32_t second_card_status = 0x070D;

// A fallback that no readable property is expected to hold.
inline constexpr std::uint64_t unreadable = ~std::uint64_t{0};

}  // namespace property

namespace half_press {
inline constexpr std::uint64_t let_go = 1;
inline constexpr std::uint64_t held = 2;
}  // namespace half_press

namespace file_type {
inline constexpr std::uint64_t jpeg = 1;
inline constexpr std::uint64_t raw = 2;
inline constexpr std::uint64_t raw_and_jpeg = 3;
inline constexpr std::uint64_t raw_and_heif = 4;
}  // namespace file_type

namespace destination {
inline constexpr std::uint64_t computer = 1;
inline constexpr std::uint64_t memory_card = 2;
inline constexpr std::uint64_t both = 3;
}  // namespace destination

namespace priority {
inline constexpr std::uint64_t pc_remote = 2;
}  // namespace priority

namespace pair_transfer {
inline constexpr std::uint64_t raw_and_jpeg = 0;
inline constexpr std::uint64_t raw_and_heif = 3;
}  // namespace pair_transfer

namespace card_status {
inline constexpr std::uint64_t no_card = 1;
}  // namespace card_status
