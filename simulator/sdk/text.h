#pragma once

// Numbers and texts as the scene language and the journal write them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace camera_sim {

// Decimal, or hexadecimal behind 0x; nothing when it is no number or has more than 64 bits.
std::optional<std::uint64_t> to_number(std::string_view text);
int hex_digit(char c);  // -1 when it is none

std::string in_quotes(std::string_view text);  // with quotation marks and escapes
std::string hex(std::uint32_t number, int digits = 8);

}  // namespace camera_sim
