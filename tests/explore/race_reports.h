#pragma once

#include <cstddef>
#include <string>

#include "tests/explore/clocks.h"

// What is said of accesses that should not be.
namespace explore {

// Marks in the shadow, in the place of a fiber's number.
inline constexpr int freed = 14;
inline constexpr int several_readers = 15;

// "heap+128", "global g_cmds+8", "stack of reader, 40 below its top".
std::string place_of(const void* address);
std::string code_at(const void* code);

// Ends the run: the running fiber does `what` to a byte after the other moment, without order.
[[noreturn]] void tell_race(const void* address, Epoch other, const char* what, const void* code);

}  // namespace explore
