// What the compiler inserts for plain memory accesses.

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/races.h"

using explore::reads;
using explore::writes;

WORKER_CALL void __tsan_init() {}
WORKER_CALL void __tsan_func_entry(void*) {}
WORKER_CALL void __tsan_func_exit() {}

WORKER_CALL void __tsan_read1(void* address) {
    reads<1>(address, CALLER);
}
WORKER_CALL void __tsan_read2(void* address) {
    reads<2>(address, CALLER);
}
WORKER_CALL void __tsan_read4(void* address) {
    reads<4>(address, CALLER);
}
WORKER_CALL void __tsan_read8(void* address) {
    reads<8>(address, CALLER);
}
WORKER_CALL void __tsan_read16(void* address) {
    reads<16>(address, CALLER);
}
WORKER_CALL void __tsan_write1(void* address) {
    writes<1>(address, CALLER);
}
WORKER_CALL void __tsan_write2(void* address) {
    writes<2>(address, CALLER);
}
WORKER_CALL void __tsan_write4(void* address) {
    writes<4>(address, CALLER);
}
WORKER_CALL void __tsan_write8(void* address) {
    writes<8>(address, CALLER);
}
WORKER_CALL void __tsan_write16(void* address) {
    writes<16>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_read2(void* address) {
    reads<2>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_read4(void* address) {
    reads<4>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_read8(void* address) {
    reads<8>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_read16(void* address) {
    reads<16>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_write2(void* address) {
    writes<2>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_write4(void* address) {
    writes<4>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_write8(void* address) {
    writes<8>(address, CALLER);
}
WORKER_CALL void __tsan_unaligned_write16(void* address) {
    writes<16>(address, CALLER);
}
WORKER_CALL void __tsan_read_range(void* address, std::size_t size) {
    reads(address, size, CALLER);
}
WORKER_CALL void __tsan_write_range(void* address, std::size_t size) {
    writes(address, size, CALLER);
}
WORKER_CALL void __tsan_vptr_read(void** place) {
    reads<8>(static_cast<const void*>(place), CALLER);
}
// The compiler calls this before every write of a table pointer, the same one again included.
WORKER_CALL void __tsan_vptr_update(void** place, void* table) {
    if (*place != table) {
        writes<8>(static_cast<const void*>(place), CALLER);
    }
}
