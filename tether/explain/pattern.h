// A line of the wire against the text that the catalogue has for it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace explain {

// Whether the line is the text with something in the place of each word in braces. A {code} is a
// code; of the others only {hint} may be empty.
bool is_line_of(std::string_view line, std::string_view text);

// The first code of the SDK in a text, as "0x8703" or "0x00008703".
std::optional<std::uint32_t> code_in(std::string_view text);

// How many bytes have to be changed to make the one of the other.
std::size_t distance(std::string_view one, std::string_view other);

}  // namespace explain
