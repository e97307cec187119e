// What the compiler inserts for atomic operations. Each is a step of its own, sequentially
// consistent; only the order between plain accesses that it makes follows the memory order asked
// for.

#include <cstdint>

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/races.h"

namespace explore {

namespace {

bool acquires(int order) {
    return order != __ATOMIC_RELAXED && order != __ATOMIC_RELEASE;
}
bool releases(int order) {
    return order == __ATOMIC_RELEASE || order == __ATOMIC_ACQ_REL || order == __ATOMIC_SEQ_CST;
}

template <typename Value>
Value load(const volatile Value* place, int order, const void* code) {
    if (in_run()) {
        offer();
        touches(const_cast<const Value*>(place), sizeof(Value), code);
        Object& object = object_at(const_cast<const Value*>(place));
        look_at(object);
        if (acquires(order)) {
            acquire(object);
        }
    }
    return *place;
}

// Every atomic change: `next` makes the new value from the old one.
template <typename Value, typename Next>
Value update(volatile Value* place, int order, const void* code, bool keeps, Next next) {
    if (in_run()) {
        offer();
        touches(const_cast<const Value*>(place), sizeof(Value), code);
        Object& object = object_at(const_cast<const Value*>(place));
        change(object);
        if (keeps && acquires(order)) {
            acquire(object);
        }
        // A plain store cuts the chain of what came before; an exchange goes on with it.
        if (!keeps) {
            object.clock.fill(0);
        }
        if (releases(order)) {
            release(object);
        }
    }
    const Value old = *place;
    *place = next(old);
    return old;
}

template <typename Value>
bool exchange_if(volatile Value* place, Value* expected, Value desired, int order,
                 int failure_order, const void* code) {
    if (in_run()) {
        offer();
        touches(const_cast<const Value*>(place), sizeof(Value), code);
        Object& object = object_at(const_cast<const Value*>(place));
        if (*place != *expected) {
            look_at(object);
            if (acquires(failure_order)) {
                acquire(object);
            }
        } else {
            change(object);
            if (acquires(order)) {
                acquire(object);
            }
            if (releases(order)) {
                release(object);
            }
        }
    }
    if (*place != *expected) {
        *expected = *place;
        return false;
    }
    *place = desired;
    return true;
}

}  // namespace

}  // namespace explore

#define ATOMIC_UPDATE(bits, name, keeps, expression)                                          \
    WORKER_CALL std::uint##bits##_t __tsan_atomic##bits##_##name(                             \
        volatile std::uint##bits##_t* place, std::uint##bits##_t value, int order) {          \
        using Value = std::uint##bits##_t;                                                    \
        return explore::update(place, order, CALLER, keeps, [&]([[maybe_unused]] Value old) { \
            return static_cast<Value>(expression);                                            \
        });                                                                                   \
    }

#define ATOMIC_CALLS(bits)                                                                        \
    WORKER_CALL std::uint##bits##_t __tsan_atomic##bits##_load(                                   \
        const volatile std::uint##bits##_t* place, int order) {                                   \
        return explore::load(place, order, CALLER);                                               \
    }                                                                                             \
    WORKER_CALL void __tsan_atomic##bits##_store(volatile std::uint##bits##_t* place,             \
                                                 std::uint##bits##_t value, int order) {          \
        explore::update(place, order, CALLER, false, [&](std::uint##bits##_t) { return value; }); \
    }                                                                                             \
    ATOMIC_UPDATE(bits, exchange, true, value)                                                    \
    ATOMIC_UPDATE(bits, fetch_add, true, old + value)                                             \
    ATOMIC_UPDATE(bits, fetch_sub, true, old - value)                                             \
    ATOMIC_UPDATE(bits, fetch_and, true, old& value)                                              \
    ATOMIC_UPDATE(bits, fetch_or, true, old | value)                                              \
    ATOMIC_UPDATE(bits, fetch_xor, true, old ^ value)                                             \
    WORKER_CALL bool __tsan_atomic##bits##_compare_exchange_strong(                               \
        volatile std::uint##bits##_t* place, std::uint##bits##_t* expected,                       \
        std::uint##bits##_t desired, int order, int failure_order) {                              \
        return explore::exchange_if(place, expected, desired, order, failure_order, CALLER);      \
    }                                                                                             \
    WORKER_CALL bool __tsan_atomic##bits##_compare_exchange_weak(                                 \
        volatile std::uint##bits##_t* place, std::uint##bits##_t* expected,                       \
        std::uint##bits##_t desired, int order, int failure_order) {                              \
        return explore::exchange_if(place, expected, desired, order, failure_order, CALLER);      \
    }                                                                                             \
    WORKER_CALL std::uint##bits##_t __tsan_atomic##bits##_compare_exchange_val(                   \
        volatile std::uint##bits##_t* place, std::uint##bits##_t expected,                        \
        std::uint##bits##_t desired, int order, int failure_order) {                              \
        explore::exchange_if(place, &expected, desired, order, failure_order, CALLER);            \
        return expected;                                                                          \
    }

ATOMIC_CALLS(8)
ATOMIC_CALLS(16)
ATOMIC_CALLS(32)
ATOMIC_CALLS(64)

WORKER_CALL void __tsan_atomic_thread_fence(int) {
    explore::complain("the worker uses a memory fence, which is not modelled");
}
