// The worker's heap, and the C library's operations on bytes.

#include <cstring>
#include <new>

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/races.h"
#include "tests/explore/worker_memory.h"

WORKER_CALL void* __wrap__Znwm(std::size_t size) {
    return explore::allocate(size);
}

WORKER_CALL void __wrap__ZdlPv(void* block) {
    if (block != nullptr) {
        explore::forbid(block, explore::block_size(block), CALLER);
    }
}

WORKER_CALL void __wrap__ZdlPvm(void* block, std::size_t) {
    if (block != nullptr) {
        explore::forbid(block, explore::block_size(block), CALLER);
    }
}

WORKER_CALL void* __wrap_memcpy(void* to, const void* from, std::size_t size) {
    explore::reads(from, size, CALLER);
    explore::writes(to, size, CALLER);
    return std::memcpy(to, from, size);
}

WORKER_CALL void* __wrap_memmove(void* to, const void* from, std::size_t size) {
    explore::reads(from, size, CALLER);
    explore::writes(to, size, CALLER);
    return std::memmove(to, from, size);
}

WORKER_CALL void* __wrap_memset(void* to, int byte, std::size_t size) {
    explore::writes(to, size, CALLER);
    return std::memset(to, byte, size);
}

WORKER_CALL int __wrap_memcmp(const void* one, const void* other, std::size_t size) {
    explore::reads(one, size, CALLER);
    explore::reads(other, size, CALLER);
    return std::memcmp(one, other, size);
}

WORKER_CALL int __wrap_bcmp(const void* one, const void* other, std::size_t size) {
    explore::reads(one, size, CALLER);
    explore::reads(other, size, CALLER);
    return std::memcmp(one, other, size);
}

WORKER_CALL void* __wrap_memchr(const void* bytes, int byte, std::size_t size) {
    explore::reads(bytes, size, CALLER);
    return const_cast<void*>(std::memchr(bytes, byte, size));
}

WORKER_CALL std::size_t __wrap_strlen(const char* text) {
    const std::size_t length = std::strlen(text);
    explore::reads(text, length + 1, CALLER);
    return length;
}
