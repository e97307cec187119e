#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/explore/clocks.h"

// The memory that the worker under test can touch: its heap, its stacks and its data segment. All
// of it lies at the same addresses in every run, and each byte has a shadow for the race check.
namespace explore {

inline constexpr std::size_t heap_size = std::size_t{1} << 20;
inline constexpr std::size_t stack_size = std::size_t{128} << 10;
inline constexpr std::size_t region_size = heap_size + stack_size * most_fibers;

// Room for the objects in main's own frame, the SonyWorker among them: other threads know them.
inline constexpr std::size_t shared_stack = 1024;

struct WorkerMemory {
    char* region;  // heap, then stacks
    char* data;    // the writable part of the worker's library
    std::size_t data_size;
    Epoch* written;  // for each byte its last write
    Epoch* read;     // for each byte its last read, or a mark that names several
};

extern WorkerMemory worker_memory;

void map_worker_memory();
void map_worker_data(char* data, std::size_t size);

inline char* stack_of(int fiber) {
    return worker_memory.region + heap_size + stack_size * static_cast<std::size_t>(fiber);
}

// The worker's heap. Nothing is used twice within one run, so that a pointer to a freed block can
// never point at a new one.
void* allocate(std::size_t size);
std::size_t block_size(const void* block);
std::size_t heap_used();
void set_heap_used(std::size_t used);

}  // namespace explore
