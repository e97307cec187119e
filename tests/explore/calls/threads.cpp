// Threads, mutexes, condition variables and the guards of function-local statics.

#include <condition_variable>
#include <cstdint>
#include <dlfcn.h>
#include <mutex>
#include <pthread.h>

#include "tests/explore/calls/worker_call.h"
#include "tests/explore/races.h"
#include "tests/explore/worker_memory.h"

namespace explore {

namespace {

const char* const thread_names[] = {"signal thread", "reader",       "watchdog",
                                    "exit deadline", "fifth thread", "sixth thread"};

// What each fiber runs when it is a thread of the worker, as pthread_create was told.
struct Start {
    void* (*routine)(void*);
    void* argument;
};
Start g_starts[most_fibers];

void run_thread(void* start) {
    const Start& thread = *static_cast<const Start*>(start);
    thread.routine(thread.argument);
}

bool is_free(const Need& need) {
    return static_cast<const Object*>(need.object)->owner == nullptr;
}

// The order in which threads began to wait for a condition variable, and who has been told.
struct Waiter {
    const void* condition;
    Object* mutex;
    bool told;
};
Waiter g_waiters[most_fibers];

bool is_told_and_free(const Need& need) {
    const Waiter& waiter = g_waiters[need.number];
    return waiter.told && waiter.mutex->owner == nullptr;
}

void take(Object& mutex) {
    Fiber& self = *run.self;
    mutex.owner = &self;
    ++self.locks_held;
    change(mutex);
    acquire(mutex);
}

void give(Object& mutex) {
    Fiber& self = *run.self;
    if (mutex.owner != &self) {
        complain("%s unlocks a mutex that it does not hold", self.name);
    }
    mutex.owner = nullptr;
    --self.locks_held;
    change(mutex);
    release(mutex);
}

void tell(const void* condition, bool everybody) {
    offer();
    change(object_at(condition));
    for (int i = 0; i < run.fiber_count; ++i) {
        Waiter& waiter = g_waiters[i];
        if (waiter.condition == condition && !waiter.told) {
            waiter.told = true;
            if (!everybody) {
                return;
            }
        }
    }
}

}  // namespace

void wake_waiters() {
    offer();
    for (Waiter& waiter : g_waiters) {
        if (waiter.condition != nullptr) {
            change(object_at(waiter.condition));
            waiter.told = true;
        }
    }
}

void forget_waiters() {
    for (Waiter& waiter : g_waiters) {
        waiter = Waiter{};
    }
}

}  // namespace explore

using namespace explore;

WORKER_CALL int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    if (!in_run()) {
        return 0;
    }
    Object& object = object_at(mutex);
    if (object.owner == run.self) {
        complain("%s locks a mutex that it holds already", run.self->name);
    }
    Need need;
    need.what = "lock a mutex";
    need.met = is_free;
    need.object = &object;
    need.due = never;
    await(need);
    touches(mutex, sizeof *mutex, CALLER);
    take(object);
    return 0;
}

WORKER_CALL int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    if (!in_run()) {
        return 0;
    }
    offer_if_thorough();
    touches(mutex, sizeof *mutex, CALLER);
    give(object_at(mutex));
    return 0;
}

// std::condition_variable: constructor, destructor, wait, notify_one, notify_all.
WORKER_CALL void __wrap__ZNSt18condition_variableC1Ev(std::condition_variable* condition) {
    writes(condition, sizeof *condition, CALLER);
}

WORKER_CALL void __wrap__ZNSt18condition_variableD1Ev(std::condition_variable* condition) {
    forbid(condition, sizeof *condition, CALLER);
}

WORKER_CALL void __wrap__ZNSt18condition_variable4waitERSt11unique_lockISt5mutexE(
    std::condition_variable* condition, std::unique_lock<std::mutex>* lock) {
    // Whoever tells it without the lock may do so between the look at what is waited for and here.
    offer();
    Fiber& self = *run.self;
    touches(condition, sizeof *condition, CALLER);
    Object& mutex = object_at(lock->mutex());
    change(object_at(condition));
    give(mutex);
    g_waiters[self.number] = {condition, &mutex, false};
    Need need;
    need.what = "be woken by a condition";
    need.met = is_told_and_free;
    need.number = self.number;
    need.due = never;
    await(need);
    g_waiters[self.number] = Waiter{};
    touches(condition, sizeof *condition, CALLER);
    look_at(object_at(condition));
    take(mutex);
}

WORKER_CALL void __wrap__ZNSt18condition_variable10notify_oneEv(
    std::condition_variable* condition) {
    touches(condition, sizeof *condition, CALLER);
    tell(condition, false);
}

WORKER_CALL void __wrap__ZNSt18condition_variable10notify_allEv(
    std::condition_variable* condition) {
    touches(condition, sizeof *condition, CALLER);
    tell(condition, true);
}

// std::thread reaches these two from within the C++ library, whose calls --wrap does not redirect:
// they are found here because the program's own names come before the C library's.
WORKER_CALL int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                               void* (*routine)(void*), void* argument) noexcept {
    if (!in_run()) {
        static auto* const real =
            reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
        return real(thread, attributes, routine, argument);
    }
    int threads = 0;
    for (int i = 1; i < run.fiber_count; ++i) {
        threads += run.fibers[i].worker ? 1 : 0;
    }
    const Fiber& fiber =
        start_fiber(thread_names[threads], true, run_thread, &g_starts[run.fiber_count]);
    g_starts[fiber.number] = {routine, argument};
    *thread = static_cast<pthread_t>(fiber.number) + 1;
    offer();
    return 0;
}

WORKER_CALL int pthread_detach(pthread_t thread) noexcept {
    if (in_run()) {
        return 0;
    }
    static auto* const real =
        reinterpret_cast<decltype(&pthread_detach)>(dlsym(RTLD_NEXT, "pthread_detach"));
    return real(thread);
}

// A guard's first byte says that the object is ready, its second that somebody makes it.
WORKER_CALL int __wrap___cxa_guard_acquire(std::uint64_t* guard) {
    auto* const bytes = reinterpret_cast<std::uint8_t*>(guard);
    if (in_run()) {
        Object& object = object_at(guard);
        Need need;
        need.what = "see a static object made";
        need.met = is_free;
        need.object = &object;
        need.due = never;
        await(need);
        change(object);
        acquire(object);
        if (bytes[0] == 0) {
            object.owner = run.self;
        }
    }
    return bytes[0] == 0 ? 1 : 0;
}

WORKER_CALL void __wrap___cxa_guard_release(std::uint64_t* guard) {
    *reinterpret_cast<std::uint8_t*>(guard) = 1;
    if (in_run()) {
        Object& object = object_at(guard);
        object.owner = nullptr;
        change(object);
        release(object);
    }
}
