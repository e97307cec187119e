#include "tests/explore/worker_memory.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>

namespace explore {

WorkerMemory worker_memory;

namespace {

constexpr std::size_t alignment = 16;
constexpr std::size_t most_data = std::size_t{64} << 10;

std::size_t g_heap_used = 0;

void* map(std::size_t size, void* wanted) {
    void* const memory = mmap(wanted, size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) {
        std::perror("explore: mmap");
        std::abort();
    }
    return memory;
}

}  // namespace

void map_worker_memory() {
    void* const wanted = reinterpret_cast<void*>(0x7E0000000000);
    worker_memory.region = static_cast<char*>(map(region_size, wanted));
    const std::size_t shadow = (region_size + most_data) * sizeof(Epoch);
    worker_memory.written = static_cast<Epoch*>(map(shadow, nullptr));
    worker_memory.read = static_cast<Epoch*>(map(shadow, nullptr));
}

void map_worker_data(char* data, std::size_t size) {
    if (size > most_data) {
        std::fprintf(stderr, "explore: the worker's data segment of %zu bytes is too large\n",
                     size);
        std::abort();
    }
    worker_memory.data = data;
    worker_memory.data_size = size;
}

void* allocate(std::size_t size) {
    const std::size_t whole = alignment + (size + alignment - 1) / alignment * alignment;
    if (g_heap_used + whole > heap_size) {
        std::fputs("explore: the worker's heap is too small for this scene\n", stderr);
        std::abort();
    }
    char* const block = worker_memory.region + g_heap_used + alignment;
    *reinterpret_cast<std::size_t*>(block - alignment) = size;
    g_heap_used += whole;
    return block;
}

std::size_t block_size(const void* block) {
    return *reinterpret_cast<const std::size_t*>(static_cast<const char*>(block) - alignment);
}

std::size_t heap_used() {
    return g_heap_used;
}

void set_heap_used(std::size_t used) {
    g_heap_used = used;
}

}  // namespace explore
