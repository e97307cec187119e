#pragma once

#include <cstddef>
#include <cstdint>

// Plain memory accesses of the worker. Two of them, one a write, that no lock, atomic or thread
// start puts in order are a race, whether or not they met in this run.
namespace explore {

void reads(const void* address, std::size_t size, const void* code);
void writes(const void* address, std::size_t size, const void* code);

// An atomic operation or a lock: no race with another one, but it must come after plain writes,
// plain writes that come later after it, and never in freed memory.
void touches(const void* address, std::size_t size, const void* code);

// A freed block: every later access is an error.
void forbid(const void* address, std::size_t size, const void* code);

// For the calls that the compiler inserts, with the size known.
template <std::size_t size>
void reads(const void* address, const void* code);
template <std::size_t size>
void writes(const void* address, const void* code);

// How many marks this run has used; the next run's ticks begin above them.
std::uint32_t marks_used();
void forget_marks();

}  // namespace explore
